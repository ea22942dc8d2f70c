// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"
#include "cli/ExitCode.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>

/// Compares docs/cli.md with the program's own definition.
class DocumentationTest : public testing::Test
{
protected:
    DocumentationTest()
    {
        std::ifstream file(TAVO_CLI_PAGE);
        std::ostringstream content;
        content << file.rdbuf();
        m_page = content.str();
    }

    Definition m_definition = commandLineDefinition();
    std::string m_page;
};

TEST_F(DocumentationTest, DescribesEveryCommand)
{
    for (const CommandDefinition &command : m_definition.commands) {
        const std::regex heading("\n### .*tavo " + command.name + "\\b.*\n");
        EXPECT_TRUE(std::regex_search(m_page, heading)) << command.name;
    }
}

TEST_F(DocumentationTest, NamesEveryOption)
{
    std::vector<OptionDefinition> options = m_definition.program.options;
    for (const CommandDefinition &command : m_definition.commands) {
        options.insert(options.end(), command.options.begin(), command.options.end());
    }
    for (const OptionDefinition &option : options) {
        for (const std::string &name : option.names) {
            const std::regex named('`' + name + "[` ]");
            EXPECT_TRUE(std::regex_search(m_page, named)) << name;
        }
    }
}

TEST_F(DocumentationTest, NamesEveryExitCode)
{
    const std::string table = m_page.substr(m_page.find("## Exit codes"));
    for (const ExitCodeText &code : exitCodeTexts) {
        const std::regex row("\n\\|[^|]*\\b" + std::string(code.code) + "\\b[^|]*\\|");
        EXPECT_TRUE(std::regex_search(table, row)) << code.code;
    }
}
