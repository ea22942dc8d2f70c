// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

#include <pwd.h>
#include <unistd.h>

namespace {
/// A compositor without a screen, seen by screenshots.
class DisplayWaylandTest : public DisplayTest
{
protected:
    void SetUp() override
    {
        QFile configuration(m_folder.filePath("sway.conf"));
        ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
        configuration.write("default_border none\nxwayland disable\n");
        configuration.close();
        QStringList command{"sway", "-c", configuration.fileName()};
        if (geteuid() == 0) { // The compositor refuses to run as root.
            const passwd *user = getpwnam("nobody");
            ASSERT_EQ(chown(qPrintable(m_folder.path()), user->pw_uid, user->pw_gid), 0);
            command =
                QStringList{"setpriv", QStringLiteral("--reuid=%1").arg(user->pw_uid),
                            QStringLiteral("--regid=%1").arg(user->pw_gid), "--clear-groups"} +
                command;
        }
        m_compositor = std::make_unique<Program>(command.takeFirst());
        prepare(*m_compositor);
        m_compositor->setEnvironment("WLR_BACKENDS", "headless");
        m_compositor->setEnvironment("WLR_LIBINPUT_NO_DEVICES", "1");
        m_compositor->setEnvironment("WLR_RENDERER", "pixman");
        m_compositor->start(command);
        const QString socket = m_folder.filePath("wayland-1");
        ASSERT_TRUE(waitFor([&] { return QFile::exists(socket); }, std::chrono::seconds(20)))
            << m_compositor->error();
        for (Program *program : {&m_display, &m_camera}) {
            prepare(*program);
            program->setEnvironment("DISPLAY", "");
            program->setEnvironment("WAYLAND_DISPLAY", "wayland-1");
        }
    }

    /// A screenshot; null if none can be taken.
    QImage picture()
    {
        const QString file = m_folder.filePath("picture.png");
        return m_camera.run({file}) == 0 ? QImage(file) : QImage();
    }

    bool waitForPixel(const QPoint &point, const QColor &color)
    {
        return waitFor([&] { return picture().pixelColor(point) == color; },
                       std::chrono::seconds(20));
    }

    std::unique_ptr<Program> m_compositor;
    Program m_camera{"grim"};
};

TEST_F(DisplayWaylandTest, showsAMessageInACorner)
{
    start();
    show("Door");
    const Palette palette = Palette::find("dark", Priority::Normal);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, palette.background));
    EXPECT_EQ(picture().pixelColor(s_leftOfCorner, s_insideOfCorner.y()), palette.accent);
    EXPECT_NE(picture().pixelColor(s_screenWidth - 4, 4), palette.background);
}

TEST_F(DisplayWaylandTest, anUrgentMessageComesInFrontAndTheOtherComesBack)
{
    start();
    show("Parcel", Priority::Normal);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    const uint alarm = show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Urgent)));
    m_messages.close(alarm);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
}

TEST_F(DisplayWaylandTest, isGoneWithTheMessage)
{
    const QColor empty = picture().pixelColor(s_insideOfCorner);
    start();
    const uint id = show("Door");
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, background(Priority::Normal)));
    m_messages.close(id);
    EXPECT_TRUE(waitForPixel(s_insideOfCorner, empty));
}

TEST_F(DisplayWaylandTest, obeysTheModesAndThePosition)
{
    writeConfiguration({{"mode", "banner"}, {"position", "bottom-end"}});
    start();
    show("Door");
    constexpr int bottom = 719; // of the compositor's only output
    EXPECT_TRUE(waitForPixel({s_screenWidth / 2, bottom - 8}, background(Priority::Normal)));
    writeConfiguration({{"mode", "fullscreen"}});
    EXPECT_TRUE(waitForPixel({5, 5}, Palette::find("dark", Priority::Normal).backdrop));
}
} // namespace
