// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"
#include "base/StopSignals.h"
#include "cli/CommandLine.h"
#include "cli/commands/Command.h"
#include "cli/definition/Commands.h"
#include "cli/reference/Writers.h"

#include <QCoreApplication>

#include <cstdio>

namespace {
int exitWith(const CommandLineEnd &end)
{
    const QString text = QString::fromStdString(end.text).trimmed();
    if (end.code == ExitCode::Ok) {
        std::printf("%s\n", qUtf8Printable(text));
    } else {
        // The text repeats arguments, which may come from an untrusted source.
        std::fprintf(stderr, "%s\n", qUtf8Printable(printable(text)));
    }
    return static_cast<int>(end.code);
}

int generate(const std::string &kind)
{
    const auto text = writeReference(commandLineDefinition(), kind);
    const bool isWritten =
        text && std::fputs(text->c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return static_cast<int>(isWritten ? ExitCode::Ok : ExitCode::SystemError);
}

int run(const Options &options, QCoreApplication &application)
{
    Terminal terminal;
    TavoClient client(QString::fromStdString(options.bus));
    constexpr int secondMs = 1000;
    client.setTimeout(int(options.replyTimeoutSeconds * secondMs));
    const auto command = Command::create(options, client, terminal);
    // Queued, as it may be finished before the event loop runs.
    tavoConnect(
        command.get(), &Command::finished, &application,
        [](int code) { QCoreApplication::exit(code); }, Qt::QueuedConnection);
    // May block while it reads standard input. A signal ends the program until it returns.
    command->start();
    const auto stopSignals = StopSignals::install();
    if (stopSignals) { // Without them, a signal ends the process at once.
        tavoConnect(stopSignals.get(), &StopSignals::received, command.get(), &Command::interrupt);
    }
    const int code = QCoreApplication::exec();
    return terminal.isGood() || code != 0 ? code : static_cast<int>(ExitCode::SystemError);
}
} // namespace

int main(int argc, char **argv)
{
    const auto line = readCommandLine(argc, argv);
    if (const auto *end = std::get_if<CommandLineEnd>(&line)) {
        return exitWith(*end);
    }
    const Options &options = std::get<Options>(line);
    if (options.command == Options::Command::Generate) {
        return generate(options.generate);
    }
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    return run(options, application);
}
