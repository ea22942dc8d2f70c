// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Program.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using namespace exploration;
using testing::HasSubstr;

Program program()
{
    return {"Explores.", "/module.so", {{"alive", 3, 1, 4, "items alive at once"}}, {}};
}
} // namespace

TEST(ProgramTest, HasDefaults)
{
    const Options options = parseOptions(program(), {});
    EXPECT_EQ(options.module, "/module.so");
    EXPECT_EQ(options.numbers.at("alive"), 3);
    EXPECT_GE(options.bounds.jobs, 1);
    EXPECT_FALSE(options.replays);
}

TEST(ProgramTest, TakesTheCommonOptionsAndItsOwn)
{
    const Options options =
        parseOptions(program(), {"--module", "/other.so", "--alive", "2", "--jobs", "3",
                                 "--max-depth", "7", "--first", "--replay", "1 2.3"});
    EXPECT_EQ(options.module, "/other.so");
    EXPECT_EQ(options.numbers.at("alive"), 2);
    EXPECT_EQ(options.bounds.jobs, 3);
    EXPECT_EQ(options.bounds.maxDepth, 7U);
    EXPECT_TRUE(options.bounds.first);
    EXPECT_TRUE(options.replays);
    EXPECT_EQ(toString(options.replay), "1 2.3");
}

TEST(ProgramTest, RefusesWrongCalls)
{
    using Arguments = std::vector<std::string>;
    for (const Arguments &arguments :
         {Arguments{"--nothing"}, Arguments{"--alive"}, Arguments{"--alive", "5"},
          Arguments{"--alive", "x"}, Arguments{"--jobs", "0"}, Arguments{"--replay", "x"}}) {
        EXPECT_THROW(parseOptions(program(), arguments), std::invalid_argument)
            << arguments.front();
    }
}

TEST(ProgramTest, HelpsWithItsOwnOptions)
{
    std::ostringstream help;
    printHelp(program(), help);
    EXPECT_THAT(help.str(), HasSubstr("  --alive N          items alive at once (3)"));
}
