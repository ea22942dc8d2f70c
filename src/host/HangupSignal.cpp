// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HangupSignal.h"

#include "core/base/connect.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace {
bool hasTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}
} // namespace

std::unique_ptr<HangupSignal> HangupSignal::install(std::function<void()> onReceived)
{
    sigset_t hangup;
    sigemptyset(&hangup);
    sigaddset(&hangup, SIGHUP);
    const int descriptor = signalfd(-1, &hangup, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor < 0) {
        return nullptr;
    }
    pthread_sigmask(SIG_BLOCK, &hangup, nullptr);
    return std::unique_ptr<HangupSignal>(new HangupSignal(descriptor, std::move(onReceived)));
}

HangupSignal::HangupSignal(int descriptor, std::function<void()> onReceived)
    : m_notifier(descriptor, QSocketNotifier::Read)
    , m_onReceived(std::move(onReceived))
    , m_hadTerminal(hasTerminal())
{
    tavoConnect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
}

void HangupSignal::read()
{
    signalfd_siginfo info = {};
    if (::read(int(m_notifier.socket()), &info, sizeof info) != sizeof info) {
        return;
    }
    if (m_hadTerminal && !hasTerminal()) {
        kill(getpid(), SIGTERM);
        return;
    }
    m_onReceived();
}
