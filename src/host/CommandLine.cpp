// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/CommandLine.h"

#include "base/CommonOptions.h"

#include <fcntl.h>

namespace {
constexpr const char *exitCodes = R"(
Exit codes:
  0    success: stopped by SIGINT, SIGTERM or a module
  64   wrong arguments
  69   a module is missing, can't be loaded or exports no worker_create
  70   a module's worker_create failed, or a module did not stop
  71   an operation of the operating system failed
  78   the configuration is wrong or can't be read
  130  ended at once, by SIGINT as the second signal
  143  ended at once, by SIGTERM as the second signal
)";

constexpr const char *signalActions = R"(
Signals:
  SIGINT, SIGTERM  stop the host
  SIGHUP           read the configuration again, and change what can change
)";

constexpr const char *environment = R"(
Environment:
  TAVO_MODULE_PATH  folders to search for modules, separated by colons
  TAVO_LOG_LEVEL    log levels as for --log-level, separated by commas
)";

struct Options : CommonOptions
{
    QCommandLineOption modulePath{
        QStringLiteral("module-path"),
        QStringLiteral("Search <folder> for modules first. May be given more than once."),
        QStringLiteral("folder")};
    QCommandLineOption logLevel{
        QStringLiteral("log-level"),
        QStringLiteral(
            "Log records of <level> and above; LOGGER=LEVEL applies to one logger only. May "
            "be given more than once."),
        QStringLiteral("level")};
    QCommandLineOption readyDescriptor{
        QStringLiteral("ready-fd"),
        QStringLiteral("Write \"ready\" to descriptor <n> when all modules run, and close it."),
        QStringLiteral("n")};
    QCommandLineOption check{QStringLiteral("check"),
                             QStringLiteral("Check the configuration without starting anything.")};
    QCommandLineOption listModules{
        QStringLiteral("list-modules"),
        QStringLiteral("List the modules on the search path with their files.")};
};

void prepare(QCommandLineParser &parser, const Options &options)
{
    parser.setApplicationDescription(
        QStringLiteral("Runs worker modules, each in a thread of its own, until SIGINT or "
                       "SIGTERM."));
    parser.addOptions({options.config, options.modulePath, options.logLevel,
                       options.readyDescriptor, options.check, options.listModules, options.help,
                       options.version});
}

Failure usage(const QString &reason)
{
    return {QStringLiteral("tavo-host: %1").arg(reason)};
}

CommandLine::Action actionOf(const QCommandLineParser &parser, const Options &options)
{
    if (parser.isSet(options.help)) {
        return CommandLine::Action::ShowHelp;
    }
    if (parser.isSet(options.version)) {
        return CommandLine::Action::ShowVersion;
    }
    if (parser.isSet(options.listModules)) {
        return CommandLine::Action::ListModules;
    }
    return parser.isSet(options.check) ? CommandLine::Action::Check : CommandLine::Action::Run;
}

bool isOpenDescriptor(int descriptor)
{
    return descriptor >= 0 && fcntl(descriptor, F_GETFD) != -1;
}
} // namespace

Result<CommandLine> CommandLine::parse(const QStringList &arguments)
{
    const Options options;
    QCommandLineParser parser;
    prepare(parser, options);
    if (const auto failure = options.parse(parser, arguments)) {
        return usage(failure->reason);
    }
    CommandLine line;
    line.action = actionOf(parser, options);
    line.configurationFile = parser.value(options.config);
    line.modulePath = parser.values(options.modulePath);
    for (const QString &text : parser.values(options.logLevel)) {
        const auto level = logLevelFromText(text);
        if (!level) {
            return usage(QStringLiteral("--log-level %1: must be LEVEL or LOGGER=LEVEL with one of "
                                        "the levels %2")
                             .arg(text, logLevelNames()));
        }
        line.logLevels.append(*level);
    }
    if (parser.isSet(options.readyDescriptor)) {
        bool isNumber = false;
        const QString text = parser.value(options.readyDescriptor);
        line.readyDescriptor = text.toInt(&isNumber);
        if (!isNumber || !isOpenDescriptor(*line.readyDescriptor)) {
            return usage(QStringLiteral("--ready-fd %1: must be an open descriptor").arg(text));
        }
    }
    return line;
}

QString CommandLine::helpText()
{
    QCommandLineParser parser;
    prepare(parser, {});
    return parser.helpText() + QLatin1String(signalActions) + QLatin1String(environment) +
           QLatin1String(exitCodes);
}
