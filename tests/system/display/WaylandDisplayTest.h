// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayTest.h"

#include <pwd.h>
#include <unistd.h>

/// A compositor without a screen, seen by screenshots.
class DisplayWaylandTest : public DisplayTest
{
protected:
    void SetUp() override
    {
        if (!TAVO_HAS_LAYER_SHELL) {
            GTEST_SKIP() << "tavo-display was built without LayerShellQt";
        }
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
