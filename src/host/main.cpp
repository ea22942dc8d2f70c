// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"
#include "base/StopSignals.h"
#include "core/base/connect.h"
#include "host/CommandLine.h"
#include "host/CrashReport.h"
#include "host/HangupSignal.h"
#include "host/Host.h"
#include "host/HostLog.h"
#include "host/Journal.h"
#include "host/ModuleLoader.h"
#include "host/Reload.h"
#include "host/ServiceManager.h"
#include "host/Settings.h"

#include <QCoreApplication>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <systemd/sd-daemon.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

namespace {
/// Keeps the host running when a handler of an event throws an exception, in any thread. The request that
/// was being handled is dropped, so its sender gets an error.
class Application : public QCoreApplication
{
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        try {
            return QCoreApplication::notify(receiver, event);
        } catch (const std::exception &exception) {
            LOG4CPLUS_ERROR(log4cplus::Logger::getInstance("Host"),
                            "A handler of a " << receiver->metaObject()->className()
                                              << " threw an exception: " << exception.what());
            return true;
        }
    }
};

int exitWith(const ExitFailure &failure)
{
    std::fprintf(stderr, "%s%s\n", goesToJournal() ? SD_ERR : "",
                 qPrintable(printable(failure.reason)));
    return static_cast<int>(failure.code);
}

int print(const QString &text)
{
    std::printf("%s\n", qPrintable(text));
    return static_cast<int>(ExitCode::Ok);
}

int listModules(const Settings &settings)
{
    for (const FoundModule &module : ModuleLoader(settings.searchPath()).list()) {
        const QString remark =
            module.error ? QStringLiteral("\terror: ") + *module.error : QString();
        std::printf("%s\t%s%s\n", qPrintable(module.name), qPrintable(module.file),
                    qPrintable(remark));
    }
    return static_cast<int>(ExitCode::Ok);
}

void reportReady(const CommandLine &line, int moduleCount)
{
    LOG4CPLUS_INFO(log4cplus::Logger::getInstance("Host"),
                   "Host ready, " << moduleCount << " modules");
    if (line.readyDescriptor) {
        constexpr const char *message = "ready\n";
        if (write(*line.readyDescriptor, message, std::strlen(message)) < 0) {
            qWarning("Nobody reads the descriptor given by --ready-fd");
        }
        close(*line.readyDescriptor);
    }
}

/// Each waiting sound of a client keeps its file open, so the usual soft limit of 1024 is too low.
void raiseDescriptorLimit()
{
    constexpr rlim_t enough = 65536;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < enough) {
        limit.rlim_cur = std::min(limit.rlim_max, enough);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void on_stopSignals_received(int signal)
{
    LOG4CPLUS_INFO(log4cplus::Logger::getInstance("Host"), "Stopping: " << strsignal(signal));
    QCoreApplication::quit();
}

int run(const CommandLine &line, const Settings &settings,
        const std::vector<LocatedModule> &modules)
{
    // Writing to a client that has gone must fail, not end the host.
    std::signal(SIGPIPE, SIG_IGN);
    installCrashReport();
    raiseDescriptorLimit();
    std::function<void()> reload; // empty until all modules run; the event loop starts later still
    const auto hangupSignal = HangupSignal::install([&reload] { reload(); });
    const auto stopSignals = StopSignals::install();
    if (!hangupSignal || !stopSignals) {
        return exitWith(
            {ExitCode::SystemError, QStringLiteral("tavo-host: can't wait for signals")});
    }
    tavoConnect(stopSignals.get(), &StopSignals::received, QCoreApplication::instance(),
                on_stopSignals_received);
    const auto log = HostLog::open(settings.log());
    if (const auto *failure = std::get_if<Failure>(&log)) {
        return exitWith({ExitCode::Configuration, failure->reason});
    }
    SimplePlayerLimits::setDefaults(settings.sounds());
    ServiceManager manager;
    Host host(manager.heartbeat());
    if (const auto failure = host.start(modules, [] { return !StopSignals::isReceived(); })) {
        return exitWith(*failure);
    }
    if (!StopSignals::isReceived()) {
        reportReady(line, host.moduleCount());
        manager.reportReady(host);
    }
    Reload reloading(line, settings, *std::get<std::unique_ptr<HostLog>>(log), host);
    reload = [&] {
        manager.reportReloading();
        manager.reportReloaded(reloading.run());
    };
    QCoreApplication::exec();
    manager.reportStopping();
    host.stop();
    LOG4CPLUS_INFO(log4cplus::Logger::getInstance("Host"), "Host stopped");
    return static_cast<int>(ExitCode::Ok);
}

int act(const CommandLine &line)
{
    const auto settings = Settings::read(line);
    if (const auto *failure = std::get_if<ExitFailure>(&settings)) {
        return exitWith(*failure);
    }
    if (line.action == CommandLine::Action::ListModules) {
        return listModules(std::get<Settings>(settings));
    }
    const auto modules = std::get<Settings>(settings).locateModules();
    if (const auto *failure = std::get_if<Failure>(&modules)) {
        return exitWith({ExitCode::ModuleUnavailable, failure->reason});
    }
    const auto &located = std::get<std::vector<LocatedModule>>(modules);
    if (line.action == CommandLine::Action::Check) {
        return print(QStringLiteral("%1: good, %2 modules")
                         .arg(std::get<Settings>(settings).source())
                         .arg(located.size()));
    }
    return run(line, std::get<Settings>(settings), located);
}
} // namespace

int main(int argc, char **argv)
{
    // GLib's event dispatcher makes each queued call a third more expensive.
    qputenv("QT_NO_GLIB", "1");
    Application app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavo-host"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));

    const auto line = CommandLine::parse(QCoreApplication::arguments());
    if (const auto *failure = std::get_if<Failure>(&line)) {
        return exitWith({ExitCode::Usage, failure->reason});
    }
    switch (std::get<CommandLine>(line).action) {
    case CommandLine::Action::ShowHelp:
        return print(CommandLine::helpText().trimmed());
    case CommandLine::Action::ShowVersion:
        return print(QStringLiteral("tavo-host %1").arg(QCoreApplication::applicationVersion()));
    default:
        return act(std::get<CommandLine>(line));
    }
}
