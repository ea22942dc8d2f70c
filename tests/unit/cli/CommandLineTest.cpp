// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/CommandLine.h"

#include "cli/Priority.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

using testing::HasSubstr;
using testing::StartsWith;

namespace {
std::variant<Options, CommandLineEnd> readArguments(std::vector<const char *> arguments)
{
    arguments.insert(arguments.begin(), "tavo");
    return readCommandLine(int(arguments.size()), arguments.data());
}

Options optionsOf(const std::vector<const char *> &arguments)
{
    const auto read = readArguments(arguments);
    if (const auto *end = std::get_if<CommandLineEnd>(&read)) {
        ADD_FAILURE() << end->text;
        return {};
    }
    return std::get<Options>(read);
}

/// The error for the arguments. Checks that there is one.
std::string refusalOf(const std::vector<const char *> &arguments)
{
    const auto read = readArguments(arguments);
    const auto *end = std::get_if<CommandLineEnd>(&read);
    if (end == nullptr) {
        ADD_FAILURE() << "these arguments are taken";
        return {};
    }
    EXPECT_EQ(end->code, ExitCode::Usage);
    EXPECT_EQ(end->text.find('\n'), std::string::npos) << end->text;
    return end->text;
}
} // namespace

class CommandLineTest : public testing::Test
{
protected:
    CommandLineTest() { unsetenv("TAVO_BUS"); }
    ~CommandLineTest() override { unsetenv("TAVO_BUS"); }
};

TEST_F(CommandLineTest, ReadsASoundWithItsOptions)
{
    const Options options =
        optionsOf({"sound", "a.wav", "--id", "bell", "--priority", "high", "--loop", "--wait"});
    EXPECT_EQ(options.command, Options::Command::Sound);
    EXPECT_EQ(options.file, "a.wav");
    EXPECT_EQ(options.id, "bell");
    EXPECT_EQ(options.priority, "high");
    EXPECT_TRUE(options.loop);
    EXPECT_TRUE(options.wait);
}

TEST_F(CommandLineTest, CollectsTheActionsOfANotification)
{
    const Options options =
        optionsOf({"notify", "--action", "open=Open", "Door", "--action", "no=Not = now", "Ring"});
    EXPECT_EQ(options.title, "Door");
    EXPECT_EQ(options.message, "Ring");
    EXPECT_EQ(options.actions, (std::vector<std::string>{"open=Open", "no=Not = now"}));
    EXPECT_THAT(refusalOf({"notify", "Door", "--action", "open"}), HasSubstr("must be KEY=LABEL"));
    EXPECT_THAT(refusalOf({"notify", "Door", "--action", "=Open"}), HasSubstr("must be KEY=LABEL"));
}

TEST_F(CommandLineTest, AcceptsADashForStandardInput)
{
    EXPECT_EQ(optionsOf({"sound", "-"}).file, "-");
}

TEST_F(CommandLineTest, AcceptsGlobalOptionsBeforeAndAfterTheCommand)
{
    EXPECT_TRUE(optionsOf({"--json", "--bus", "system", "list"}).json);
    const Options behind = optionsOf({"list", "--json", "--bus", "unix:path=/x"});
    EXPECT_TRUE(behind.json);
    EXPECT_EQ(behind.bus, "unix:path=/x");
}

TEST_F(CommandLineTest, TakesTheBusFromTheEnvironmentUnlessAnOptionNamesOne)
{
    setenv("TAVO_BUS", "unix:path=/from-environment", 1);
    EXPECT_EQ(optionsOf({"list"}).bus, "unix:path=/from-environment");
    EXPECT_EQ(optionsOf({"list", "--bus", "system"}).bus, "system");
}

TEST_F(CommandLineTest, RefusesAStringThatIsNotABus)
{
    const auto saysSo = HasSubstr("--bus: must be session, system or a bus address");
    EXPECT_THAT(refusalOf({"--bus", "sytem", "list"}), saysSo);
    EXPECT_THAT(refusalOf({"--bus", "", "list"}), saysSo);
    setenv("TAVO_BUS", "user", 1);
    EXPECT_THAT(refusalOf({"list"}), saysSo);
    setenv("TAVO_BUS", "", 1);
    EXPECT_EQ(optionsOf({"list"}).bus, "session");
}

TEST_F(CommandLineTest, UsesTheSessionBusByDefault)
{
    EXPECT_EQ(optionsOf({"list"}).bus, "session");
}

TEST_F(CommandLineTest, AcceptsTheNameOfACommandAsAnArgument)
{
    const Options options = optionsOf({"show", "list", "status"});
    EXPECT_EQ(options.command, Options::Command::Show);
    EXPECT_EQ(options.title, "list");
    EXPECT_EQ(options.message, "status");
}

TEST_F(CommandLineTest, AcceptsAnArgumentThatBeginsWithADashAfterTwoDashes)
{
    EXPECT_EQ(optionsOf({"show", "--", "--wait"}).title, "--wait");
}

TEST_F(CommandLineTest, AcceptsANegativeNumberAsAValue)
{
    EXPECT_EQ(optionsOf({"call", "/x", "-5"}).value, "-5");
    EXPECT_EQ(optionsOf({"sound", "a.wav", "--priority", "-5"}).priority, "-5");
}

TEST_F(CommandLineTest, RefusesAnInvalidPriority)
{
    EXPECT_THAT(refusalOf({"sound", "a.wav", "--priority", "loud"}),
                HasSubstr("must be low, normal, high, urgent or an integer"));
}

TEST_F(CommandLineTest, RefusesANegativeTimeout)
{
    EXPECT_THAT(refusalOf({"show", "x", "--timeout", "-3"}), HasSubstr("--timeout"));
}

TEST_F(CommandLineTest, SaysWhichNumbersATimeoutOrACountMayBe)
{
    const auto saysSo = HasSubstr(": must be an integer from 0 to 2147483647.");
    for (const char *wrong : {"-3", "5s", "2.5", "2147483648", ""}) {
        EXPECT_THAT(refusalOf({"show", "x", "--timeout", wrong}), saysSo) << wrong;
        EXPECT_THAT(refusalOf({"list", "--count", wrong}), saysSo) << wrong;
    }
}

TEST_F(CommandLineTest, AcceptsTheLargestTimeout)
{
    EXPECT_EQ(optionsOf({"show", "x", "--timeout", "2147483647"}).timeout, 2147483647);
}

TEST_F(CommandLineTest, RefusesAReplyTimeoutOutOfItsRange)
{
    EXPECT_THAT(refusalOf({"--reply-timeout", "0", "list"}), HasSubstr("--reply-timeout"));
    EXPECT_THAT(refusalOf({"--reply-timeout", "nan", "list"}), HasSubstr("--reply-timeout"));
}

TEST_F(CommandLineTest, NamesTheUnknownCommand)
{
    EXPECT_EQ(refusalOf({"sond", "a.wav"}), "tavo: there is no command sond. See tavo --help.");
    EXPECT_EQ(refusalOf({"--json", "help"}), "tavo: there is no command help. See tavo --help.");
    EXPECT_EQ(refusalOf({"-v"}),
              "tavo: The following argument was not expected: -v. See tavo --help.");
}

TEST_F(CommandLineTest, RefusesAMissingCommand)
{
    EXPECT_EQ(refusalOf({}), "tavo: no command was given. See tavo --help.");
}

TEST_F(CommandLineTest, RefusesAnUnknownCommand)
{
    EXPECT_THAT(refusalOf({"sing"}), HasSubstr("sing"));
}

TEST_F(CommandLineTest, NamesTheCommandWhoseHelpToRead)
{
    EXPECT_THAT(refusalOf({"sound"}), HasSubstr("See tavo sound --help."));
    EXPECT_THAT(refusalOf({"get", "/x", "--loud"}), HasSubstr("See tavo get --help."));
}

TEST_F(CommandLineTest, ShowsTheHelpOfTheProgramOrOfACommand)
{
    const auto program = readArguments({"--help"});
    EXPECT_EQ(std::get<CommandLineEnd>(program).code, ExitCode::Ok);
    EXPECT_THAT(std::get<CommandLineEnd>(program).text,
                StartsWith("Usage: tavo [OPTIONS] COMMAND"));
    const auto command = readArguments({"sound", "--help"});
    EXPECT_EQ(std::get<CommandLineEnd>(command).code, ExitCode::Ok);
    EXPECT_THAT(std::get<CommandLineEnd>(command).text,
                StartsWith("Usage: tavo sound [OPTIONS] FILE"));
}

TEST_F(CommandLineTest, ShowsTheVersion)
{
    const auto read = readArguments({"--version"});
    EXPECT_EQ(std::get<CommandLineEnd>(read).code, ExitCode::Ok);
    EXPECT_EQ(std::get<CommandLineEnd>(read).text, "tavo " TAVO_VERSION);
}

TEST(PriorityTest, ReadsNamesInAnyCase)
{
    EXPECT_EQ(priorityFromText("low"), TavoNotificationItemPriority::Low);
    EXPECT_EQ(priorityFromText("URGENT"), TavoNotificationItemPriority::Urgent);
}

TEST(PriorityTest, ReadsEvery32BitInteger)
{
    EXPECT_EQ(int(*priorityFromText("-2147483648")), -2147483647 - 1);
    EXPECT_EQ(int(*priorityFromText("2147483647")), 2147483647);
}

TEST(PriorityTest, RefusesOtherStrings)
{
    for (const char *text : {"", "loud", "2147483648", "1.5", "0x"}) {
        EXPECT_FALSE(priorityFromText(text)) << text;
    }
}
