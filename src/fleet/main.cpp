// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"
#include "base/sqlite/SqliteError.h"
#include "base/StopSignals.h"
#include "fleet/CommandLine.h"
#include "fleet/Device.h"
#include "fleet/ExitCode.h"
#include "fleet/FleetLog.h"
#include <core/base/connect.h>

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace {
int print(const QString &text)
{
    std::printf("%s\n", qUtf8Printable(text));
    return int(ExitCode::Ok);
}

int fail(ExitCode code, const QString &reason)
{
    FleetLog::error(reason);
    return int(code);
}

QString busOf(const CommandLine &line, const FleetConfiguration &configuration)
{
    if (!line.bus.isEmpty()) {
        return line.bus;
    }
    return configuration.bus.isEmpty() ? qEnvironmentVariable("TAVO_BUS", QStringLiteral("session"))
                                       : configuration.bus;
}

int run(QCoreApplication &app, const CommandLine &line, const FleetConfiguration &configuration)
{
    // Writing to a connection that has gone must fail, not end the program.
    std::signal(SIGPIPE, SIG_IGN);
    const auto stopSignals = StopSignals::install();
    if (stopSignals) { // Without them, a signal ends the program at once.
        tavoConnect(stopSignals.get(), &StopSignals::received, &app, &QCoreApplication::quit);
    }
    try {
        FleetStore store(configuration.store);
        if (!store.damage().isEmpty()) {
            FleetLog::error(QStringLiteral("%1 was damaged and has been put aside: %2")
                                .arg(configuration.store, store.damage()));
        }
        Device device(configuration, busOf(line, configuration), store);
        device.start();
        const int code = QCoreApplication::exec();
        device.stop();
        return code;
    } catch (const SqliteError &error) {
        return fail(ExitCode::Store,
                    QStringLiteral("%1: %2").arg(configuration.store, error.reason()));
    }
}

int check(const QString &file, const FleetConfiguration &configuration)
{
    const QStringList missing = configuration.missing(file);
    for (const QString &line : missing) {
        FleetLog::error(line);
    }
    return missing.isEmpty() ? print(QStringLiteral("%1: good").arg(file))
                             : int(ExitCode::Configuration);
}

int act(QCoreApplication &app, const CommandLine &line)
{
    try {
        const auto configuration = FleetConfiguration::fromFile(line.configurationFile);
        if (line.action == CommandLine::Action::Check) {
            return check(line.configurationFile, configuration);
        }
        return run(app, line, configuration);
    } catch (const std::runtime_error &error) {
        return fail(ExitCode::Configuration, QString::fromStdString(error.what()));
    }
}
} // namespace

int main(int argc, char **argv)
{
    // Qt's own event dispatcher: GLib's wakes up more often.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tavo-fleet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAVO_VERSION));
    const auto line = CommandLine::parse(QCoreApplication::arguments());
    if (const auto *failure = std::get_if<Failure>(&line)) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(printable(failure->reason)));
        return int(ExitCode::Usage);
    }
    switch (std::get<CommandLine>(line).action) {
    case CommandLine::Action::ShowHelp:
        return print(CommandLine::helpText().trimmed());
    case CommandLine::Action::ShowVersion:
        return print(QStringLiteral("tavo-fleet %1").arg(QCoreApplication::applicationVersion()));
    default:
        return act(app, std::get<CommandLine>(line));
    }
}
