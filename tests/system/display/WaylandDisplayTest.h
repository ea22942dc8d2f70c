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
        startCompositor({"sway", "-c", configuration.fileName()});
    }

    /// Returns when the compositor accepts connections.
    void startCompositor(QStringList command)
    {
        if (geteuid() == 0) { // Sway refuses to run as root.
            const passwd *user = getpwnam("nobody");
            ASSERT_EQ(chown(qPrintable(m_folder.path()), user->pw_uid, user->pw_gid), 0);
            command =
                QStringList{"setpriv", QStringLiteral("--reuid=%1").arg(user->pw_uid),
                            QStringLiteral("--regid=%1").arg(user->pw_gid), "--clear-groups"} +
                command;
        }
        for (const QString &stale : sockets()) {
            QFile::remove(m_folder.filePath(stale));
        }
        m_compositor = std::make_unique<Program>(command.takeFirst());
        prepare(*m_compositor);
        m_compositor->setEnvironment("WLR_BACKENDS", "headless");
        m_compositor->setEnvironment("WLR_LIBINPUT_NO_DEVICES", "1");
        m_compositor->setEnvironment("WLR_RENDERER", "pixman");
        m_compositor->setEnvironment("WLR_XWAYLAND", "/bin/true"); // Cage ends without one.
        m_compositor->start(command);
        ASSERT_TRUE(waitFor([&] { return !sockets().isEmpty(); }, std::chrono::seconds(20)))
            << m_compositor->error();
        for (Program *program : {&m_display, &m_camera, &m_control}) {
            prepare(*program);
            program->setEnvironment("DISPLAY", "");
            program->setEnvironment("WAYLAND_DISPLAY", sockets().first());
        }
    }

    QStringList sockets() const
    {
        return QDir(m_folder.path()).entryList({"wayland-?"}, QDir::System, QDir::Name);
    }

    /// Has sway execute a command, or answer a question.
    void control(const QStringList &command)
    {
        const QDir folder(m_folder.path());
        const QStringList sockets = folder.entryList({"sway-ipc.*"}, QDir::System, QDir::Time);
        ASSERT_FALSE(sockets.isEmpty());
        ASSERT_EQ(m_control.run(QStringList{"-s", folder.filePath(sockets.first())} + command), 0)
            << m_control.output() << m_control.error();
    }

    /// A screenshot of an output; null if none can be taken.
    QImage picture(const QString &output = QStringLiteral("HEADLESS-1"))
    {
        const QString file = m_folder.filePath("picture.png");
        return m_camera.run({"-o", output, file}) == 0 ? QImage(file) : QImage();
    }

    bool waitForPixel(const QPoint &point, const QColor &color,
                      const QString &output = QStringLiteral("HEADLESS-1"))
    {
        return waitFor([&] { return picture(output).pixelColor(point) == color; },
                       std::chrono::seconds(20));
    }

    std::unique_ptr<Program> m_compositor;
    Program m_camera{"grim"};
    Program m_control{"swaymsg"};
};
