// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/CrashReport.h"

#include "host/LogQueue.h"

#include <csignal>
#include <cstring>
#include <sys/prctl.h>
#include <unistd.h>

namespace {
void print(const char *text)
{
    if (write(STDERR_FILENO, text, std::strlen(text)) < 0) {
        return; // There is nobody to tell.
    }
}

// Calls only functions that may be called from a signal handler.
void reportCrash(int signal, siginfo_t *info, void * /*context*/)
{
    const bool isOwn = info->si_code > 0 || (info->si_code == SI_TKILL && info->si_pid == getpid());
    if (isOwn) {
        LogQueue::waitAfterCrash();
        constexpr int maxThreadName = 16;
        char thread[maxThreadName] = "";
        prctl(PR_GET_NAME, thread);
        print("tavo-host: the thread ");
        print(thread);
        print(" has crashed. If it is a module's, take the module out of the configuration, or "
              "install "
              "another version of it.\n");
    }
    // The default action is set again by now.
    if (info->si_code <= 0) {
        raise(signal);
    }
}
} // namespace

void installCrashReport()
{
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        struct sigaction present = {};
        if (sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_DFL) {
            struct sigaction report = {};
            report.sa_sigaction = reportCrash;
            report.sa_flags = SA_SIGINFO | SA_RESETHAND;
            sigaction(signal, &report, nullptr);
        }
    }
}
