// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/view/Palette.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/host/HostProcess.h"
#include "support/program/Program.h"
#include "support/x11/XServer.h"
#include <client/TavoClient.h>
#include <client/TavoMessages.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <memory>

/// The program on a private X server, with a host on a private bus.
class DisplayTest : public testing::Test
{
protected:
    using Priority = TavoNotificationItemPriority;
    static constexpr quint32 keyEscape = 0xff1b; ///< as X11 numbers it

    DisplayTest()
    {
        QFile::setPermissions(m_folder.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        prepare(m_display);
    }

    void TearDown() override
    {
        if (HasFailure()) {
            std::cout << "The program wrote:\n"
                      << m_display.output() << m_display.error() << "The host wrote:\n"
                      << (m_host ? m_host->log().toStdString() : std::string()) << std::endl;
            m_server.picture().save("/tmp/tavo-display-test.png");
        }
    }

    void prepare(Program &program) const
    {
        program.setEnvironment("TAVO_BUS", m_bus.address());
        program.setEnvironment("DISPLAY", m_server.name());
        program.setEnvironment("WAYLAND_DISPLAY", "");
        program.setEnvironment("QT_QPA_PLATFORM", "");
        program.setEnvironment("XDG_RUNTIME_DIR", m_folder.path());
        program.setEnvironment("XDG_CONFIG_HOME", m_folder.path());
        program.setEnvironment("LC_ALL", "C.UTF-8");
    }

    void startHost(const QJsonObject &limits = {}, const QJsonArray &more = {})
    {
        m_host = std::make_unique<HostProcess>();
        const QJsonObject devices{{"mainDevice", "null"}, {"notificationsDevice", "null"}};
        QJsonArray modules{
            "powermanager", QJsonObject{{"name", "player"}, {"config", devices}}, "notifications",
            QJsonObject{{"name", "dbus"},
                        {"config", QJsonObject{{"bus", m_bus.address()}, {"limits", limits}}}}};
        for (const QJsonValue &module : more) {
            modules.insert(modules.size() - 1, module);
        }
        m_host->setConfiguration({{"modules", modules}});
        ASSERT_TRUE(m_host->startReady()) << m_host->log().toStdString();
        ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
        ASSERT_TRUE(m_host->waitForLog("Serving org.freedesktop.Notifications"));
    }

    /// A host with the module for attention.
    void startAttention(const QByteArray &settings = "{}", const QJsonObject &limits = {})
    {
        QFile file(m_folder.filePath("attention.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(settings);
        file.close();
        const QJsonObject history{{"file", m_folder.filePath("history.db")}};
        const QJsonObject config{{"settings", file.fileName()},
                                 {"history", history},
                                 {"speech", QJsonObject{{"command", QJsonArray{}}}}};
        startHost(limits, {QJsonObject{{"name", "attention"}, {"config", config}}});
    }

    void setDoNotDisturb(bool isOn)
    {
        const auto reply = m_client.call(
            TavoAttentionSetDoNotDisturbPath(),
            TavoValue().setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(isOn)));
        ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }));
        ASSERT_FALSE(reply.error().isError()) << reply.error().message().toString().toStdString();
    }

    /// Notifies people, while they do not want to be disturbed, of so many things with numbers as titles.
    void miss(int count)
    {
        for (int i = 1; i <= count; ++i) {
            notify(QString::number(i));
        }
        ASSERT_TRUE(waitFor([&] { return missed() == count; }));
    }

    /// Notifies people, as their rules allow.
    void notify(const QString &title)
    {
        m_client.call(TavoAttentionNotifyPath(),
                      TavoValue().setAttentionItem(TavoAttentionItem()
                                                       .setTitle(title)
                                                       .setText(QStringLiteral("A text"))
                                                       .setApplication(QStringLiteral("mail"))));
    }

    int missed()
    {
        const auto reply = m_client.getValue(TavoAttentionMissedPath());
        EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }));
        return TavoValue(reply.value().toHash()).int_();
    }

    /// Has the running program show the history. Returns the exit code.
    int openHistory()
    {
        Program other(TAVO_DISPLAY_PROGRAM);
        prepare(other);
        return other.run({"--history"});
    }

    void writeConfiguration(const QJsonObject &configuration)
    {
        QDir(m_folder.path()).mkpath("tavo");
        QFile file(m_folder.filePath("tavo/display.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(configuration).toJson());
    }

    /// Starts the host and the program.
    void start(const QStringList &arguments = {})
    {
        startHost();
        m_display.start(arguments);
    }

    /// Queues a message and returns its id.
    uint show(const QString &title, Priority::Enum priority = Priority::Normal, int timeoutMs = 0,
              const QString &text = QStringLiteral("A text"))
    {
        TavoMessage message;
        message.title = title;
        message.text = text;
        message.priority = priority;
        message.timeout = timeoutMs;
        const CMReply<uint> id = m_messages.show(message);
        EXPECT_TRUE(waitFor([&] { return id.isFinished(); }));
        EXPECT_FALSE(id.error().isError()) << id.error().message().toString().toStdString();
        return id.value();
    }

    /// The place of the only window, once there is one.
    QRect waitForWindow()
    {
        QRect place;
        EXPECT_TRUE(m_server.waitForWindows([&](const QVector<QRect> &windows) {
            place = windows.value(0);
            return windows.size() == 1 && place.height() > 1;
        }));
        return place;
    }

    bool waitForNoWindow()
    {
        return m_server.waitForWindows([](const auto &windows) { return windows.isEmpty(); });
    }

    static QColor background(Priority::Enum priority)
    {
        return Palette::find("dark", priority).background;
    }

    /// Waits until the look of the priority is drawn in the corner at the top right.
    bool waitForLook(Priority::Enum priority)
    {
        const Palette palette = Palette::find("dark", priority);
        return m_server.waitForPicture([&](const QImage &picture) {
            // Beside the title: nothing but the background.
            const bool hasBackground = picture.pixelColor(s_insideOfCorner) == palette.background;
            const bool hasAccent =
                picture.pixelColor(s_leftOfCorner, s_insideOfCorner.y()) == palette.accent;
            return hasBackground && hasAccent;
        });
    }

    /// The buttons do nothing for half a second. A person takes longer.
    void waitUntilArmed()
    {
        QElapsedTimer timer;
        timer.start();
        constexpr int armDelayMs = 600;
        waitFor([&] { return timer.hasExpired(armDelayMs); });
    }

    static constexpr int s_margin = 16;
    static constexpr int s_width = 420;
    static constexpr int s_screenWidth = 1280;
    static constexpr int s_leftOfCorner = s_screenWidth - s_margin - s_width + 2;
    static constexpr QPoint s_insideOfCorner{s_screenWidth - s_margin - 8, s_margin + 60};
    static constexpr QPoint s_closeButton{s_screenWidth - s_margin - 36, s_margin + 36};

    QTemporaryDir m_folder;
    XServer m_server;
    PrivateBus m_bus;
    std::unique_ptr<HostProcess> m_host;
    Program m_display{TAVO_DISPLAY_PROGRAM};
    TavoClient m_client{m_bus.address()};
    TavoMessages m_messages{&m_client};
};
