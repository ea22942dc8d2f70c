// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/desktop/SoundTheme.h"

#include "support/Text.h"
#include "support/TimeOf.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using testing::ElementsAre;

/// Two data folders. The first takes precedence.
class SoundThemeTest : public testing::Test
{
protected:
    SoundThemeTest() { describe("system"_s, "freedesktop"_s); }

    QString path(const QString &name) const { return m_folder.filePath(name); }

    QString make(const QString &name, const QByteArray &content = {}) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path(name);
    }

    void describe(const QString &folder, const QString &theme, const QByteArray &more = {}) const
    {
        make(folder + '/' + theme + "/index.theme"_s,
             "[Sound Theme]\nName=Some\nDirectories=stereo\n" + more +
                 "\n[stereo]\nOutputProfile=stereo\n");
    }

    QString find(const QString &event, const QString &theme = "freedesktop"_s,
                 const QString &locale = {}) const
    {
        return SoundTheme(theme, {path("user"_s), path("system"_s)}, locale).find(event);
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(SoundThemeTest, FindsAThemesSound)
{
    const QString file = make("system/freedesktop/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s), file);
}

TEST_F(SoundThemeTest, FindsNothingForAnUnknownEvent)
{
    make("system/freedesktop/stereo/bell.oga"_s);
    EXPECT_EQ(find("belt"_s), QString());
    EXPECT_EQ(find("bell-"_s + QString(300, 'x')), QString());
}

TEST_F(SoundThemeTest, PrefersExtensionsInTheirOrder)
{
    const QString wav = make("system/freedesktop/stereo/bell.wav"_s);
    EXPECT_EQ(find("bell"_s), wav);
    const QString ogg = make("system/freedesktop/stereo/bell.ogg"_s);
    EXPECT_EQ(find("bell"_s), ogg);
    const QString oga = make("system/freedesktop/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s), oga);
}

TEST_F(SoundThemeTest, FallsBackToTheMoreGeneralEvent)
{
    const QString file = make("system/freedesktop/stereo/dialog-warning.oga"_s);
    EXPECT_EQ(find("dialog-warning-auth-failed"_s), file);
    EXPECT_EQ(find("dialog"_s), QString());
}

TEST_F(SoundThemeTest, TriesEightNamesAtMost)
{
    const QString file = make("system/freedesktop/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s + "-x"_s.repeated(7)), file);
    EXPECT_EQ(find("bell"_s + "-x"_s.repeated(8)), QString());
}

/// A client can name events as often as it may send requests, and everybody waits meanwhile.
TEST_F(SoundThemeTest, TakesNoLongerForANameOfAHundredParts)
{
    constexpr int tolerance = 4;
    const auto timeFor = [this](int parts) {
        return processorTimeOf([&] { find("a"_s + "-a"_s.repeated(parts - 1)); });
    };
    EXPECT_LT(timeFor(100), tolerance * timeFor(8));
}

TEST_F(SoundThemeTest, PrefersAParentsSoundForTheEventToItsOwnForAGeneralOne)
{
    describe("system"_s, "special"_s);
    make("system/special/stereo/dialog.oga"_s);
    const QString file = make("system/freedesktop/stereo/dialog-error.oga"_s);
    EXPECT_EQ(find("dialog-error"_s, "special"_s), file);
}

TEST_F(SoundThemeTest, PrefersTheThemeToItsParents)
{
    describe("system"_s, "special"_s, "Inherits=parent, other");
    describe("system"_s, "parent"_s);
    describe("system"_s, "other"_s);
    const QString other = make("system/other/stereo/bell.oga"_s);
    make("system/freedesktop/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s, "special"_s), other);
    const QString parent = make("system/parent/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s, "special"_s), parent);
    const QString own = make("system/special/stereo/bell.wav"_s);
    EXPECT_EQ(find("bell"_s, "special"_s), own);
}

TEST_F(SoundThemeTest, AlwaysInheritsTheCommonTheme)
{
    const QString file = make("system/freedesktop/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s, "missing"_s), file);
}

TEST_F(SoundThemeTest, EndsWhenThemesInheritEachOther)
{
    describe("system"_s, "one"_s, "Inherits=two");
    describe("system"_s, "two"_s, "Inherits=one,two");
    EXPECT_EQ(find("bell"_s, "one"_s), QString());
}

TEST_F(SoundThemeTest, PrefersTheFirstFolder)
{
    make("system/freedesktop/stereo/bell.oga"_s);
    const QString file = make("user/freedesktop/stereo/bell.wav"_s);
    EXPECT_EQ(find("bell"_s), file);
}

TEST_F(SoundThemeTest, FindsNothingForADisabledSound)
{
    make("system/freedesktop/stereo/bell.oga"_s);
    make("user/freedesktop/stereo/bell.disabled"_s);
    EXPECT_EQ(find("bell"_s), QString());
    EXPECT_EQ(find("bell-loud"_s), QString());
}

TEST_F(SoundThemeTest, LooksOnlyInFoldersForTheStereoProfile)
{
    make("system/special/index.theme"_s,
         "[Sound Theme]\nDirectories=around,plain\n[around]\nOutputProfile=5.1\n[plain]\n");
    make("system/special/around/bell.oga"_s);
    const QString file = make("system/special/plain/bell.oga"_s);
    EXPECT_EQ(find("bell"_s, "special"_s), file);
}

TEST_F(SoundThemeTest, PrefersTheSoundForTheLanguage)
{
    const QString common = make("system/freedesktop/stereo/bell.oga"_s);
    const QString german = make("system/freedesktop/stereo/de/bell.oga"_s);
    const QString austrian = make("system/freedesktop/stereo/de_AT/bell.oga"_s);
    EXPECT_EQ(find("bell"_s, "freedesktop"_s, "de_AT.UTF-8@euro"_s), austrian);
    EXPECT_EQ(find("bell"_s, "freedesktop"_s, "de_DE.UTF-8"_s), german);
    EXPECT_EQ(find("bell"_s, "freedesktop"_s, "fr_FR"_s), common);
}

TEST_F(SoundThemeTest, FindsSoundsWithoutATheme)
{
    const QString file = make("user/bell.oga"_s);
    EXPECT_EQ(find("bell"_s), file);
}

TEST_F(SoundThemeTest, NeverLeavesTheFolders)
{
    make("system/freedesktop/stereo/bell.oga"_s);
    make("secret.oga"_s);
    EXPECT_EQ(find("../../../secret"_s), QString());
    EXPECT_EQ(find("../stereo/bell"_s), QString());
    EXPECT_EQ(find("/bell"_s), QString());
    EXPECT_EQ(find("."_s), QString());
    EXPECT_EQ(find({}), QString());
    EXPECT_EQ(find("bell"_s, "../system/freedesktop"_s),
              path("system/freedesktop/stereo/bell.oga"_s));
    make("system/special/index.theme"_s, "[Sound Theme]\nDirectories=../..,/etc\nInherits=../x\n");
    EXPECT_EQ(find("secret"_s, "special"_s), QString());
}

TEST_F(SoundThemeTest, DoesNotTakeAFolderForASound)
{
    make("system/freedesktop/stereo/bell.oga/file"_s);
    EXPECT_EQ(find("bell"_s), QString());
}

TEST_F(SoundThemeTest, SurvivesAnInvalidDescription)
{
    make("system/broken/index.theme"_s,
         "\0\xFF[Sound\n]=[=\nDirectories=stereo\n=\n[]\n"_s.toUtf8());
    make("system/broken/stereo/bell.oga"_s);
    EXPECT_EQ(find("bell"_s, "broken"_s), QString());
}

TEST(SoundThemeFoldersTest, FollowTheEnvironment)
{
    qputenv("XDG_DATA_HOME", "/home/some/data");
    qputenv("XDG_DATA_DIRS", "/opt/share/:relative:/usr/share");
    EXPECT_THAT(
        SoundTheme::environmentFolders(),
        ElementsAre("/home/some/data/sounds"_s, "/opt/share/sounds"_s, "/usr/share/sounds"_s));
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("XDG_DATA_DIRS");
    EXPECT_THAT(SoundTheme::environmentFolders(),
                ElementsAre(QDir::homePath() + "/.local/share/sounds"_s,
                            "/usr/local/share/sounds"_s, "/usr/share/sounds"_s));
}
} // namespace
