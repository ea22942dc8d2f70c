// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/ConfigurationFile.h"
#include "support/EventLoop.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {
using Mode = DisplayConfiguration::Mode;

DisplayConfiguration read(const char *json)
{
    return DisplayConfiguration::fromJson(json, QStringLiteral("/etc/tavo/display.json"));
}

std::string errorOf(const char *json)
{
    try {
        read(json);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

TEST(DisplayConfigurationTest, hasDefaults)
{
    const DisplayConfiguration configuration = read("{}");
    EXPECT_EQ(configuration.mode, Mode::Corner);
    EXPECT_TRUE(configuration.isAtTop);
    EXPECT_TRUE(configuration.isAtEnd);
    EXPECT_EQ(configuration.theme, "dark");
    EXPECT_FALSE(configuration.reducedMotion);
}

TEST(DisplayConfigurationTest, readsAllKeys)
{
    const DisplayConfiguration configuration = read(R"({
        "bus": "system", "renderer": "opengl", "mode": "banner", "position": "bottom-start",
        "screen": "HDMI-1", "margin": 0, "width": 600, "textSize": 30, "theme": "mine/Theme.qml",
        "iconTheme": "Adwaita", "language": "de_AT", "focusKey": "Ctrl+Alt+N", "reducedMotion": true,
        "mark": "missed" })");
    EXPECT_EQ(configuration.bus, "system");
    EXPECT_EQ(configuration.renderer, DisplayConfiguration::Renderer::OpenGl);
    EXPECT_EQ(configuration.mode, Mode::Banner);
    EXPECT_FALSE(configuration.isAtTop);
    EXPECT_FALSE(configuration.isAtEnd);
    EXPECT_EQ(configuration.mark, DisplayConfiguration::Mark::Missed);
    EXPECT_EQ(configuration.screen, "HDMI-1");
    EXPECT_EQ(configuration.margin, 0);
    EXPECT_EQ(configuration.width, 600);
    EXPECT_EQ(configuration.textSize, 30);
    EXPECT_EQ(configuration.theme, "/etc/tavo/mine/Theme.qml");
    EXPECT_EQ(configuration.iconTheme, "Adwaita");
    EXPECT_EQ(configuration.language, "de_AT");
    EXPECT_EQ(configuration.focusKey, "Ctrl+Alt+N");
    EXPECT_TRUE(configuration.reducedMotion);
}

TEST(DisplayConfigurationTest, aWrongOneNamesFileKeyAndReason)
{
    EXPECT_EQ(errorOf(R"({"mode": "middle"})"),
              "/etc/tavo/display.json: mode: must be one of corner, banner, fullscreen");
    EXPECT_EQ(errorOf(R"({"textSize": 4})"),
              "/etc/tavo/display.json: textSize: must be an integer from 8 to 200");
    EXPECT_EQ(
        errorOf(R"({"theme": "bright"})"),
        "/etc/tavo/display.json: theme: must be one of dark, light, high-contrast, or the path "
        "of a QML file");
    EXPECT_EQ(errorOf(R"({"language": "klingon!"})"),
              "/etc/tavo/display.json: language: must be a language such as \"de\" or \"de_AT\"");
    EXPECT_EQ(errorOf(R"({"focusKey": "N"})"),
              "/etc/tavo/display.json: focusKey: must be a key with modifiers, such as \"Meta+N\"");
    EXPECT_THAT(errorOf(R"({"colour": 1})"), testing::HasSubstr("colour"));
    EXPECT_THAT(errorOf("{"), testing::StartsWith("/etc/tavo/display.json:1:"));
}

class DisplayConfigurationFileTest : public testing::Test
{
protected:
    void write(const QByteArray &content, const QString &name = "display.json")
    {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QTemporaryDir m_folder;
    const QString m_name = m_folder.filePath("display.json");
};

TEST_F(DisplayConfigurationFileTest, isReadAgainWhenItChanges)
{
    write(R"({"width": 300})");
    ConfigurationFile file(m_name);
    const QSignalSpy changed(&file, &ConfigurationFile::changed);
    EXPECT_EQ(file.configuration().width, 300);
    write(R"({"width": 500})");
    ASSERT_TRUE(waitFor([&] { return !changed.isEmpty(); }));
    EXPECT_EQ(file.configuration().width, 500);
}

TEST_F(DisplayConfigurationFileTest, isReadWhenItIsMadeLater)
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.path()));
    ConfigurationFile file({});
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(file.configuration().width, DisplayConfiguration().width);
    ASSERT_TRUE(QDir(m_folder.path()).mkdir("tavo"));
    write(R"({"width": 300})", "tavo/display.json");
    EXPECT_TRUE(waitFor([&] { return file.configuration().width == 300; }));
}

TEST_F(DisplayConfigurationFileTest, isReadAgainWhenItIsReplacedTwice)
{
    write(R"({"width": 300})");
    ConfigurationFile file(m_name);
    const QSignalSpy changed(&file, &ConfigurationFile::changed);
    for (const int width : {400, 500}) {
        write(QByteArrayLiteral("{\"width\": ") + QByteArray::number(width) + '}', "new");
        ASSERT_TRUE(std::rename(qPrintable(m_folder.filePath("new")), qPrintable(m_name)) == 0);
        ASSERT_TRUE(waitFor([&] { return file.configuration().width == width; }));
    }
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(DisplayConfigurationFileTest, theLastGoodOneStaysWhileTheFileIsWrong)
{
    write(R"({"width": 300})");
    ConfigurationFile file(m_name);
    QSignalSpy failed(&file, &ConfigurationFile::failed);
    write(R"({"width": "wide"})");
    ASSERT_TRUE(waitFor([&] { return !failed.isEmpty(); }));
    EXPECT_EQ(failed[0][0].toString(), m_name + ": width: must be an integer from 200 to 10000");
    EXPECT_EQ(file.configuration().width, 300);
    ASSERT_TRUE(QFile::remove(m_name));
    write(R"({"width": 700})");
    ASSERT_TRUE(waitFor([&] { return file.configuration().width == 700; }));
    EXPECT_EQ(failed.size(), 1);
}

TEST_F(DisplayConfigurationFileTest, refusesAWrongFileAtTheStart)
{
    write("[]");
    EXPECT_THROW(ConfigurationFile{m_name}, std::runtime_error);
}
} // namespace
