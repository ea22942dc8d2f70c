// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/CommandLine.h"

#include "cli/definition/Definition.h"
#include "cli/reference/Writers.h"
#include <CLI/CLI.hpp>

namespace {
const char *const description = "Plays and shows notifications on a device that runs tavo-host, "
                                "and reads the host's model.";

const char *const footer =
    "On a terminal, the output has colours and a live line. An error is printed as one line on "
    "standard error.\n\n"
    "Environment:\n"
    "  TAVO_BUS   the bus, unless --bus names one\n"
    "  NO_COLOR   if set and not empty: no colours";

std::string replyTimeoutError(const std::string &text)
{
    constexpr double min = 0.01;
    constexpr double max = 86400;
    double seconds = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, seconds);
    // Written so that not-a-number is refused as well.
    return isNumber && seconds >= min && seconds <= max ? ""
                                                        : "must be a number from 0.01 to 86400";
}

std::string busError(const std::string &text)
{
    const bool isAddress = text.find(':') != std::string::npos;
    return isAddress || text == "session" || text == "system"
               ? ""
               : "must be session, system or a bus address such as unix:path=/run/bus";
}

void defineGlobalOptions(CLI::App &app, Options &options)
{
    app.set_help_flag("-h,--help", "Show the help; after a command, that of the command");
    app.set_version_flag("--version", "tavo " TAVO_VERSION, "Show the version");
    app.add_option("--bus", options.bus, "session, system or a bus address (session)")
        ->envname("TAVO_BUS")
        ->check(CLI::Validator(busError, ""))
        ->type_name(ValueName::bus);
    app.add_flag("--json", options.json, "Print JSON");
    app.add_option("--reply-timeout", options.replyTimeoutSeconds,
                   "How long to wait for a reply of the bus or the host (10)")
        ->check(CLI::Validator(replyTimeoutError, ""))
        ->type_name(ValueName::seconds);
    // An option without a group is left out of the help.
    app.add_option("--generate", options.generate)
        ->check(CLI::IsMember({"man", "bash", "zsh", "fish"}))
        ->group("");
}

CommandLineEnd help(const CLI::App &app)
{
    const Reference reference = Reference::of(app);
    const auto used = app.get_subcommands();
    return {ExitCode::Ok, used.empty()
                              ? helpText(reference)
                              : helpText(reference, *reference.find(used.front()->get_name()))};
}

CommandLineEnd wrongArguments(const CLI::App &app, const CLI::Error &error)
{
    const std::vector<std::string> unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty() && unknown.front().rfind('-', 0) != 0) {
        return {ExitCode::Usage,
                "tavo: there is no command " + unknown.front() + ". See tavo --help."};
    }
    std::string command = "tavo";
    for (const CLI::App *used : app.get_subcommands()) {
        command += ' ' + used->get_name();
    }
    return {ExitCode::Usage,
            std::string("tavo: ") + error.what() + ". See " + command + " --help."};
}
} // namespace

std::unique_ptr<CLI::App> defineCommandLine(Options &options)
{
    auto app = std::make_unique<CLI::App>(description, "tavo");
    app->footer(footer);
    defineGlobalOptions(*app, options);
    defineNotificationCommands(*app, options);
    defineModelCommands(*app, options);
    defineOverviewCommands(*app, options);
    // At most one subcommand: a command's argument may be spelled like another command.
    app->require_subcommand(0, 1);
    return app;
}

Result<Options, CommandLineEnd> readCommandLine(int argc, const char *const *argv)
{
    Options options;
    const auto app = defineCommandLine(options);
    try {
        app->parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        return help(*app);
    } catch (const CLI::CallForVersion &version) {
        return CommandLineEnd{ExitCode::Ok, version.what()};
    } catch (const CLI::Error &error) {
        return wrongArguments(*app, error);
    }
    if (!options.generate.empty()) {
        options.command = Options::Command::Generate;
    } else if (app->get_subcommands().empty()) {
        return CommandLineEnd{ExitCode::Usage, "tavo: no command was given. See tavo --help."};
    }
    return options;
}
