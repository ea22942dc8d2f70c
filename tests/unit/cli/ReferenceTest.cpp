// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/CommandLine.h"
#include "cli/definition/Commands.h"
#include "cli/reference/Writers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using testing::HasSubstr;
using testing::Not;

namespace {
/// Splits a command line into words as a shell does, up to a pipe, and removes quotes.
std::vector<std::string> wordsOf(const std::string &line)
{
    std::vector<std::string> words;
    std::string word;
    char quote = 0;
    for (const char character : line + ' ') {
        if (quote == 0 && character == '|') {
            break;
        }
        if (quote == 0 && character == ' ') {
            if (!word.empty()) {
                words.push_back(word);
            }
            word.clear();
        } else if (quote == 0 && (character == '\'' || character == '"')) {
            quote = character;
        } else if (character == quote) {
            quote = 0;
        } else {
            word += character;
        }
    }
    return words;
}

/// The error for the arguments; empty if they are accepted.
std::string refusalOf(const std::vector<std::string> &arguments)
{
    std::vector<const char *> pointers;
    for (const std::string &argument : arguments) {
        pointers.push_back(argument.c_str());
    }
    const auto read = readCommandLine(int(pointers.size()), pointers.data());
    const auto *end = std::get_if<CommandLineEnd>(&read);
    return end == nullptr || end->code == ExitCode::Ok ? "" : end->text;
}
} // namespace

class ReferenceTest : public testing::Test
{
protected:
    Definition m_definition = commandLineDefinition();

    std::set<std::string> definedOptions() const
    {
        std::set<std::string> names;
        const auto add = [&names](const CommandDefinition &command) {
            for (const OptionDefinition &option : command.options) {
                names.insert(option.names.begin(), option.names.end());
            }
        };
        add(m_definition.program);
        for (const CommandDefinition &command : m_definition.commands) {
            add(command);
        }
        return names;
    }

    std::set<std::string> definedCommands() const
    {
        std::set<std::string> names;
        for (const CommandDefinition &command : m_definition.commands) {
            names.insert(command.name);
        }
        return names;
    }
};

TEST_F(ReferenceTest, HasEveryCommandOfTheDefinition)
{
    EXPECT_THAT(definedCommands(),
                testing::UnorderedElementsAre("sound", "show", "cancel", "list", "notify", "say",
                                              "history", "missed", "dnd", "rules", "fleet", "watch",
                                              "get", "rows", "call", "tree", "status", "doctor"));
}

TEST_F(ReferenceTest, DescribesEverything)
{
    for (const CommandDefinition &command : m_definition.commands) {
        EXPECT_NE(command.summary, "") << command.name;
        EXPECT_EQ(command.text.back().heading, "Examples") << command.name;
        for (const auto *options : {&command.options, &command.positionals}) {
            for (const OptionDefinition &option : *options) {
                EXPECT_NE(option.description, "") << command.name << ' ' << option.synopsis();
            }
        }
    }
}

TEST_F(ReferenceTest, NamesValuesInCapitals)
{
    for (const CommandDefinition &command : m_definition.commands) {
        for (const auto *options : {&command.options, &command.positionals}) {
            for (const OptionDefinition &option : *options) {
                EXPECT_EQ(option.valueName.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ|="),
                          std::string::npos)
                    << command.name << ' ' << option.synopsis();
            }
        }
    }
}

TEST_F(ReferenceTest, GivesEachOptionTheSameMeaningInEveryCommand)
{
    // The bash completion recognises a value only by the name of its option.
    std::map<std::string, std::set<std::string>> valueNames;
    for (const CommandDefinition &command : m_definition.commands) {
        for (const OptionDefinition &option : command.options) {
            for (const std::string &name : option.names) {
                valueNames[name].insert(option.valueName);
            }
        }
    }
    for (const auto &[name, values] : valueNames) {
        EXPECT_EQ(values.size(), 1U) << name;
    }
}

TEST_F(ReferenceTest, EachOptionIsAccepted)
{
    const std::map<std::string, std::string> values{{"BUS", "system"}, {"MS", "1"},
                                                    {"N", "1"},        {"PRIORITY", "low"},
                                                    {"SECONDS", "1"},  {"KEY=LABEL", "yes=Yes"},
                                                    {"STATE", "on"},   {"TASK", "list"}};
    for (const CommandDefinition &command : m_definition.commands) {
        std::vector<OptionDefinition> options = command.options;
        options.insert(options.end(), m_definition.program.options.begin(),
                       m_definition.program.options.end());
        const auto valueOf = [&values](const OptionDefinition &option) {
            const auto value = values.find(option.valueName);
            return value == values.end() ? std::string("/path") : value->second;
        };
        for (const OptionDefinition &option : options) {
            for (const std::string &name : option.names) {
                std::vector<std::string> arguments{"tavo", command.name, name};
                if (!option.valueName.empty()) {
                    arguments.push_back(valueOf(option));
                }
                const std::string action = option.actions.empty() ? "list" : option.actions.front();
                for (const OptionDefinition &positional : command.positionals) {
                    const auto &actions = positional.actions;
                    if (positional.valueName == "ACTION") {
                        arguments.push_back(action);
                    } else if (actions.empty() ||
                               std::count(actions.begin(), actions.end(), action) > 0) {
                        arguments.push_back(valueOf(positional));
                    }
                }
                EXPECT_EQ(refusalOf(arguments), "") << command.name << ' ' << name;
            }
        }
    }
}

TEST_F(ReferenceTest, TheExamplesAreAccepted)
{
    for (const CommandDefinition &command : m_definition.commands) {
        for (const std::string &line : command.text.back().lines) {
            EXPECT_EQ(refusalOf(wordsOf(line.substr(line.find("tavo ")))), "") << line;
        }
    }
}

TEST_F(ReferenceTest, TheManPageHasEachCommandAndOption)
{
    const std::string page = manPage(m_definition);
    for (const std::string &command : definedCommands()) {
        EXPECT_THAT(page, HasSubstr(".SS tavo " + command + "\n"));
    }
    for (const std::string &option : definedOptions()) {
        const std::string escaped = std::regex_replace(option, std::regex("-"), "\\-");
        EXPECT_THAT(page, HasSubstr("\\fB" + escaped + "\\fR")) << option;
    }
}

TEST_F(ReferenceTest, TheManPageHasEachExitCode)
{
    const std::string page = manPage(m_definition);
    for (const ExitCodeText &code : exitCodeTexts) {
        EXPECT_THAT(page, HasSubstr(std::string(".TP\n\\fB") + code.code + "\\fR\n"));
    }
}

TEST_F(ReferenceTest, TheHelpHasEachCommandAndOption)
{
    std::string help = helpText(m_definition);
    for (const std::string &command : definedCommands()) {
        EXPECT_THAT(help, HasSubstr("\n  " + command + ' '));
        help += helpText(m_definition, *m_definition.find(command));
    }
    for (const std::string &option : definedOptions()) {
        EXPECT_THAT(help, HasSubstr(option));
    }
}

TEST_F(ReferenceTest, TheHelpFitsIn80Columns)
{
    constexpr std::size_t columns = 80;
    std::string help = helpText(m_definition);
    for (const CommandDefinition &command : m_definition.commands) {
        help += helpText(m_definition, command);
    }
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), columns) << line;
    }
}

TEST_F(ReferenceTest, TheHiddenOptionIsNowhere)
{
    for (const char *kind : {"man", "bash", "zsh", "fish"}) {
        EXPECT_THAT(*writeReference(m_definition, kind), Not(HasSubstr("generate"))) << kind;
    }
    EXPECT_THAT(helpText(m_definition), Not(HasSubstr("generate")));
}

TEST(TextBlocksTest, DistinguishesParagraphsFromLinesBelowAHeading)
{
    const auto blocks = textBlocks("One\ntwo.\n\nExamples:\n  a\n  b\n\nEnd:");
    ASSERT_EQ(blocks.size(), 3U);
    EXPECT_EQ(blocks[0].heading, "");
    EXPECT_THAT(blocks[0].lines, testing::ElementsAre("One", "two."));
    EXPECT_EQ(blocks[1].heading, "Examples");
    EXPECT_THAT(blocks[1].lines, testing::ElementsAre("  a", "  b"));
    EXPECT_THAT(blocks[2].lines, testing::ElementsAre("End:"));
}
