// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/InterruptSignal.h"

#include <core/base/connect.h>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {
sigset_t interruptSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}
} // namespace

InterruptSignal::InterruptSignal()
{
    const sigset_t signals = interruptSignals();
    m_descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0) {
        return; // They end the process at once, then.
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    tavoConnect(m_notifier.get(), &QSocketNotifier::activated, this,
                &InterruptSignal::on_notifier_activated);
}

InterruptSignal::~InterruptSignal()
{
    m_notifier.reset();
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

void InterruptSignal::on_notifier_activated()
{
    signalfd_siginfo info = {};
    if (read(m_descriptor, &info, sizeof info) != sizeof info) {
        return;
    }
    m_notifier->setEnabled(false);
    const sigset_t signals = interruptSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    Q_EMIT received(int(info.ssi_signo));
}
