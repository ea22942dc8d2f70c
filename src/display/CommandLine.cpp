// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/CommandLine.h"

#include "base/CommonOptions.h"

namespace {
constexpr const char *environment = R"(
Environment:
  TAVO_BUS          the bus, if neither --bus nor the configuration names one
  QT_QPA_PLATFORM   xcb, wayland, linuxfb or eglfs; chosen by what is there if it is not set

Exit codes:
  0    stopped by SIGINT or SIGTERM, the demo has ended, or the history is shown
  1    the connection to the X server or the compositor broke
  64   wrong arguments
  69   there is no display, or no tavo-display that could show the history
  75   another tavo-display shows the messages of this bus on this display
  78   the configuration is wrong or can't be read
)";

struct Options : CommonOptions
{
    QCommandLineOption mode{
        QStringLiteral("mode"),
        QStringLiteral("Show messages as <mode>: corner, banner or fullscreen."),
        QStringLiteral("mode")};
    QCommandLineOption bus{
        QStringLiteral("bus"),
        QStringLiteral("Connect to <bus>: session, system, or the address of a bus."),
        QStringLiteral("bus")};
    QCommandLineOption demo{QStringLiteral("demo"),
                            QStringLiteral("Show every look without a host, and end.")};
    QCommandLineOption history{
        QStringLiteral("history"),
        QStringLiteral("Have the running tavo-display show what has come and what was missed, and "
                       "end.")};
    QCommandLineOption check{
        QStringLiteral("check"),
        QStringLiteral("Check the configuration and the display, tell whether another "
                       "tavo-display runs there, and end.")};
};

void prepare(QCommandLineParser &parser, const Options &options)
{
    parser.setApplicationDescription(
        QStringLiteral("Shows the messages of a host on the screen, until SIGINT or SIGTERM."));
    parser.addOptions({options.config, options.mode, options.bus, options.demo, options.history,
                       options.check, options.help, options.version});
}

Failure usage(const QString &reason)
{
    return {QStringLiteral("tavo-display: %1").arg(reason)};
}

CommandLine::Action actionOf(const QCommandLineParser &parser, const Options &options)
{
    using Action = CommandLine::Action;
    if (parser.isSet(options.help)) {
        return Action::ShowHelp;
    }
    if (parser.isSet(options.version)) {
        return Action::ShowVersion;
    }
    if (parser.isSet(options.check)) {
        return Action::Check;
    }
    if (parser.isSet(options.history)) {
        return Action::History;
    }
    return parser.isSet(options.demo) ? Action::Demo : Action::Run;
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
    line.bus = parser.value(options.bus);
    if (parser.isSet(options.mode)) {
        line.mode = DisplayConfiguration::modeFromName(parser.value(options.mode));
        if (!line.mode) {
            return usage(QStringLiteral("--mode %1: must be one of %2")
                             .arg(parser.value(options.mode), DisplayConfiguration::modeNames()));
        }
    }
    return line;
}

QString CommandLine::helpText()
{
    QCommandLineParser parser;
    prepare(parser, {});
    return parser.helpText() + QLatin1String(environment);
}
