// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/CommandLine.h"

#include "base/CommonOptions.h"

namespace {
constexpr const char *environment = R"(
Environment:
  TAVO_BUS               the bus, if neither --bus nor the configuration names one
  STATE_DIRECTORY        the folder of the file with calls and answers
  CREDENTIALS_DIRECTORY  the folder of certificates, keys and passwords that are named without a folder

Exit codes:
  0    stopped by SIGINT or SIGTERM
  64   wrong arguments
  73   the file with calls and answers can't be used
  78   the configuration is wrong or can't be read; with --check: a file is missing
)";

struct Options : CommonOptions
{
    QCommandLineOption bus{
        QStringLiteral("bus"),
        QStringLiteral("Connect to <bus>: session, system, or the address of a bus."),
        QStringLiteral("bus")};
    QCommandLineOption check{
        QStringLiteral("check"),
        QStringLiteral("Check the configuration and whether the files that it names "
                       "are there, and end.")};
};

void prepare(QCommandLineParser &parser, const Options &options)
{
    parser.setApplicationDescription(QStringLiteral(
        "Lets a fleet's controllers show messages and play sounds on this device, through an MQTT "
        "broker. Reads /etc/tavo/fleet.json unless --config names another file."));
    parser.addOptions({options.config, options.bus, options.check, options.help, options.version});
}
} // namespace

Result<CommandLine> CommandLine::parse(const QStringList &arguments)
{
    const Options options;
    QCommandLineParser parser;
    prepare(parser, options);
    if (const auto failure = options.parse(parser, arguments)) {
        return Failure{QStringLiteral("tavo-fleet: %1").arg(failure->reason)};
    }
    CommandLine line;
    if (parser.isSet(options.config)) {
        line.configurationFile = parser.value(options.config);
    }
    line.bus = parser.value(options.bus);
    if (parser.isSet(options.help)) {
        line.action = Action::ShowHelp;
    } else if (parser.isSet(options.version)) {
        line.action = Action::ShowVersion;
    } else if (parser.isSet(options.check)) {
        line.action = Action::Check;
    }
    return line;
}

QString CommandLine::helpText()
{
    QCommandLineParser parser;
    prepare(parser, {});
    return parser.helpText() + QLatin1String(environment);
}
