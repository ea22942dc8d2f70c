// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/CommandLine.h"
#include "cli/reference/Writers.h"
#include <CLI/App.hpp>
#include <CLI/Option.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
} // namespace

class ReferenceTest : public testing::Test
{
protected:
    Options m_options;
    std::unique_ptr<CLI::App> m_app = defineCommandLine(m_options);
    Reference m_reference = Reference::of(*m_app);

    /// The names of all documented options, from the definition itself.
    std::set<std::string> definedOptions() const
    {
        std::set<std::string> names;
        const auto add = [&names](const CLI::App &app) {
            for (const CLI::Option *option : app.get_options()) {
                if (option->get_group().empty()) {
                    continue;
                }
                for (const std::string &name : option->get_lnames()) {
                    names.insert(name);
                }
                for (const std::string &name : option->get_snames()) {
                    names.insert(name);
                }
            }
        };
        add(*m_app);
        for (const CLI::App *command : m_app->get_subcommands({})) {
            add(*command);
        }
        return names;
    }

    std::set<std::string> definedCommands() const
    {
        std::set<std::string> names;
        for (const CLI::App *command : m_app->get_subcommands({})) {
            names.insert(command->get_name());
        }
        return names;
    }
};

TEST_F(ReferenceTest, HasEveryCommandOfTheDefinition)
{
    EXPECT_THAT(definedCommands(),
                testing::UnorderedElementsAre("sound", "show", "cancel", "list", "watch", "get",
                                              "rows", "call", "tree", "status", "doctor"));
}

TEST_F(ReferenceTest, HasEachCommandAndOption)
{
    std::set<std::string> commands;
    std::set<std::string> options;
    const auto add = [&options](const CommandReference &command) {
        for (const OptionReference &option : command.options) {
            for (const std::string &name : option.names) {
                options.insert(name.substr(name.find_first_not_of('-')));
            }
        }
    };
    add(m_reference.program);
    for (const CommandReference &command : m_reference.commands) {
        commands.insert(command.name);
        add(command);
    }
    EXPECT_EQ(commands, definedCommands());
    EXPECT_EQ(options, definedOptions());
}

TEST_F(ReferenceTest, DescribesEverything)
{
    for (const CommandReference &command : m_reference.commands) {
        EXPECT_NE(command.summary, "") << command.name;
        EXPECT_EQ(command.text.back().heading, "Examples") << command.name;
        for (const auto *options : {&command.options, &command.positionals}) {
            for (const OptionReference &option : *options) {
                EXPECT_NE(option.description, "") << command.name << ' ' << option.synopsis();
            }
        }
    }
}

TEST_F(ReferenceTest, NamesValuesInCapitals)
{
    for (const CommandReference &command : m_reference.commands) {
        for (const auto *options : {&command.options, &command.positionals}) {
            for (const OptionReference &option : *options) {
                EXPECT_EQ(option.valueName.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ|"),
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
    for (const CommandReference &command : m_reference.commands) {
        for (const OptionReference &option : command.options) {
            for (const std::string &name : option.names) {
                valueNames[name].insert(option.valueName);
            }
        }
    }
    for (const auto &[name, values] : valueNames) {
        EXPECT_EQ(values.size(), 1U) << name;
    }
}

TEST_F(ReferenceTest, TheExamplesAreAccepted)
{
    for (const CommandReference &command : m_reference.commands) {
        for (const std::string &line : command.text.back().lines) {
            const std::vector<std::string> arguments = wordsOf(line.substr(line.find("tavo ")));
            std::vector<const char *> pointers;
            for (const std::string &argument : arguments) {
                pointers.push_back(argument.c_str());
            }
            const auto read = readCommandLine(int(pointers.size()), pointers.data());
            const auto *end = std::get_if<CommandLineEnd>(&read);
            EXPECT_EQ(end, nullptr) << line << "\n" << end->text;
        }
    }
}

TEST_F(ReferenceTest, TheManPageHasEachCommandAndOption)
{
    const std::string page = manPage(m_reference);
    for (const std::string &command : definedCommands()) {
        EXPECT_THAT(page, HasSubstr(".SS tavo " + command + "\n"));
    }
    for (const std::string &option : definedOptions()) {
        const std::string name = (option.size() == 1 ? "-" : "--") + option;
        const std::string escaped = std::regex_replace(name, std::regex("-"), "\\-");
        EXPECT_THAT(page, HasSubstr("\\fB" + escaped + "\\fR")) << option;
    }
}

TEST_F(ReferenceTest, TheManPageHasEachExitCode)
{
    const std::string page = manPage(m_reference);
    for (const ExitCodeText &code : exitCodeTexts) {
        EXPECT_THAT(page, HasSubstr(std::string(".TP\n\\fB") + code.code + "\\fR\n"));
    }
}

TEST_F(ReferenceTest, TheHelpHasEachCommandAndOption)
{
    std::string help = helpText(m_reference);
    for (const std::string &command : definedCommands()) {
        EXPECT_THAT(help, HasSubstr("\n  " + command + ' '));
        help += helpText(m_reference, *m_reference.find(command));
    }
    for (const std::string &option : definedOptions()) {
        EXPECT_THAT(help, HasSubstr((option.size() == 1 ? "-" : "--") + option));
    }
}

TEST_F(ReferenceTest, TheHelpFitsIn80Columns)
{
    constexpr std::size_t columns = 80;
    std::string help = helpText(m_reference);
    for (const CommandReference &command : m_reference.commands) {
        help += helpText(m_reference, command);
    }
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), columns) << line;
    }
}

TEST_F(ReferenceTest, TheHiddenOptionIsNowhere)
{
    for (const char *kind : {"man", "bash", "zsh", "fish"}) {
        EXPECT_THAT(*writeReference(m_reference, kind), Not(HasSubstr("generate"))) << kind;
    }
    EXPECT_THAT(helpText(m_reference), Not(HasSubstr("generate")));
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
