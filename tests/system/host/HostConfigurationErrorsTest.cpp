// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

#include <string>

using testing::IsEmpty;

struct WrongConfiguration
{
    std::string name;
    std::string json;
    /// The message after the file's name.
    std::string message;
};

static void PrintTo(const WrongConfiguration &wrong, std::ostream *stream)
{
    *stream << wrong.json;
}

/// The reader has its own tests; these check exit code, message and output of the program.
class HostConfigurationErrorsTest : public HostTest,
                                    public testing::WithParamInterface<WrongConfiguration>
{
};

TEST_P(HostConfigurationErrorsTest, EndsWithOneMessageAndStartsNothing)
{
    const QString file = m_host.setConfigurationText(QByteArray::fromStdString(GetParam().json));
    EXPECT_EQ(m_host.run(), 78);
    EXPECT_EQ(m_host.log().toStdString(), file.toStdString() + GetParam().message + "\n");
    EXPECT_THAT(events(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Errors, HostConfigurationErrorsTest,
    testing::Values(
        WrongConfiguration{"NotJson", "{\n  \"modules\": [\"scripted\"\n}\n",
                           ":3:1: unterminated array"},
        WrongConfiguration{"Empty", "", ":1:1: illegal value"},
        WrongConfiguration{"NoObject", "[]", ": must be a JSON object"},
        WrongConfiguration{"UnknownKey", R"({"modules": ["scripted"], "moduls": []})",
                           ": moduls: unknown key"},
        WrongConfiguration{"WrongType", R"({"modules": ["scripted", 7]})",
                           ": modules[1]: must be a string or an object"},
        WrongConfiguration{"Duplicate", R"({"modules": ["scripted", "scripted"]})",
                           ": modules[1].name: \"scripted\" is the name of modules[0] already"},
        WrongConfiguration{"NoLogFile", R"({"modules": ["scripted"], "log": {"file": "/none"}})",
                           ": log.file: /none is not a readable file"}),
    [](const auto &info) { return info.param.name; });

TEST_F(HostTest, ReportsAConfigurationFileThatCannotBeRead)
{
    m_host.addArguments({"--config", "/nonexistent/host.json"});
    EXPECT_EQ(m_host.run(), 78);
    EXPECT_EQ(m_host.log(), "/nonexistent/host.json: No such file or directory\n");
}

TEST_F(HostTest, ReportsAFolderInPlaceOfAConfigurationFile)
{
    m_host.addArguments({"--config", m_host.folder()});
    EXPECT_EQ(m_host.run(), 78);
    EXPECT_TRUE(m_host.log().startsWith(m_host.folder() + ": ")) << m_host.log().toStdString();
}
