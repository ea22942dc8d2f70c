// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/CommandLine.h"

#include "cli/definition/Commands.h"
#include "cli/reference/Writers.h"
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>
#include <cstdlib>

namespace {
/// The names as the parser expects them: "-w,--wait", or "FILE" of a positional argument.
std::string joinedNames(const OptionDefinition &definition)
{
    std::string names;
    for (const std::string &name : definition.names) {
        names += (names.empty() ? "" : ",") + name;
    }
    return definition.isPositional() ? definition.valueName : names;
}

/// Stores a value that has passed its check.
void store(const std::string &value, const OptionDefinition::Target &target, Options &options)
{
    if (const auto *text = std::get_if<std::string Options::*>(&target)) {
        options.*(*text) = value;
    } else if (const auto *list = std::get_if<std::vector<std::string> Options::*>(&target)) {
        (options.*(*list)).push_back(value);
    } else if (const auto *integer = std::get_if<int Options::*>(&target)) {
        options.*(*integer) = std::atoi(value.c_str());
    } else if (const auto *number = std::get_if<double Options::*>(&target)) {
        options.*(*number) = std::strtod(value.c_str(), nullptr);
    }
}

void addCheck(CLI::Option &option, const ValueCheck &check)
{
    const auto complaint = [check](const std::string &value) -> std::string {
        return check.accepts(value) ? "" : check.requirement;
    };
    option.check(CLI::Validator(complaint, ""));
}

void addOption(CLI::App &app, const OptionDefinition &definition, Options &options)
{
    const std::string names = joinedNames(definition);
    if (const auto *flag = std::get_if<bool Options::*>(&definition.target)) {
        app.add_flag(names, options.*(*flag));
        return;
    }
    const auto storeAll = [&options, target = definition.target](const CLI::results_t &values) {
        for (const std::string &value : values) {
            store(value, target, options);
        }
        return true;
    };
    CLI::Option *option = app.add_option(names, storeAll);
    if (std::holds_alternative<std::vector<std::string> Options::*>(definition.target)) {
        constexpr int anyNumber = -1;
        option->expected(1, anyNumber)->allow_extra_args(false);
    }
    option->type_name(definition.valueName);
    option->required(definition.isRequired);
    option->envname(definition.environmentVariable);
    if (definition.check.accepts != nullptr) {
        addCheck(*option, definition.check);
    }
}

void addOptions(CLI::App &app, const CommandDefinition &definition, Options &options)
{
    for (const auto *group : {&definition.positionals, &definition.options}) {
        for (const OptionDefinition &option : *group) {
            const bool hasTarget = !std::holds_alternative<std::monostate>(option.target);
            if (hasTarget) {
                addOption(app, option, options);
            }
        }
    }
}

bool isReference(const std::string &kind)
{
    return kind == "man" || kind == "bash" || kind == "zsh" || kind == "fish";
}

/// Sets the parser up to store values in the options.
void prepare(CLI::App &app, const Definition &definition, Options &options)
{
    app.set_help_flag("-h,--help");
    app.set_version_flag("--version", "tavo " TAVO_VERSION);
    addOptions(app, definition.program, options);
    // Not in the definition: it is left out of the help.
    addOption(app,
              {{"--generate"},
               "KIND",
               "",
               &Options::generate,
               {isReference, "must be man, bash, zsh or fish"}},
              options);
    for (const CommandDefinition &command : definition.commands) {
        CLI::App *added = app.add_subcommand(command.name);
        // The global options may also follow the command's name.
        added->fallthrough();
        addOptions(*added, command, options);
    }
    // At most one subcommand: a command's argument may be spelled like another command.
    app.require_subcommand(0, 1);
}

/// What is wrong with options that were given, although they have no meaning with the command's first argument.
std::string misplacedOption(const CLI::App &app, const CommandDefinition &command,
                            const Options &options)
{
    for (const auto *group : {&command.positionals, &command.options}) {
        for (const OptionDefinition &option : *group) {
            if (option.actions.empty()) {
                continue;
            }
            const auto target =
                std::get<std::string Options::*>(command.positionals.front().target);
            const std::string &action = options.*target;
            const auto &actions = option.actions;
            const bool isMisplaced =
                std::find(actions.begin(), actions.end(), action) == actions.end();
            const std::string name = option.isPositional() ? option.valueName : option.names.back();
            if (isMisplaced && app.get_option(name)->count() > 0) {
                return action + " takes no " + name;
            }
        }
    }
    return {};
}

CommandLineEnd help(const CLI::App &app, const Definition &definition)
{
    const auto used = app.get_subcommands();
    return {ExitCode::Ok, used.empty()
                              ? helpText(definition)
                              : helpText(definition, *definition.find(used.front()->get_name()))};
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

Result<Options, CommandLineEnd> readCommandLine(int argc, const char *const *argv)
{
    const Definition definition = commandLineDefinition();
    Options options;
    CLI::App app("", "tavo");
    prepare(app, definition, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        return help(app, definition);
    } catch (const CLI::CallForVersion &version) {
        return CommandLineEnd{ExitCode::Ok, version.what()};
    } catch (const CLI::Error &error) {
        return wrongArguments(app, error);
    }
    const auto used = app.get_subcommands();
    if (!options.generate.empty()) {
        options.command = Options::Command::Generate;
    } else if (used.empty()) {
        return CommandLineEnd{ExitCode::Usage, "tavo: no command was given. See tavo --help."};
    } else {
        const CommandDefinition &command = *definition.find(used.front()->get_name());
        const std::string misplaced = misplacedOption(*used.front(), command, options);
        if (!misplaced.empty()) {
            return CommandLineEnd{ExitCode::Usage,
                                  "tavo: " + misplaced + ". See tavo " + command.name + " --help."};
        }
        options.command = command.command;
    }
    return options;
}
