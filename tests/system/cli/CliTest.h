// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/host/HostProcess.h"
#include "support/program/Program.h"
#include "support/Text.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <memory>

/// The program, and a host with inaudible devices, on a private bus.
class CliTest : public testing::Test
{
protected:
    // Exit codes, as in docs/cli.md.
    static constexpr int s_good = 0;
    static constexpr int s_refused = 1;
    static constexpr int s_cancelled = 10;
    static constexpr int s_dismissed = 11;
    static constexpr int s_failed = 12;
    static constexpr int s_endUnknown = 13;
    static constexpr int s_usage = 64;
    static constexpr int s_noInput = 66;
    static constexpr int s_unavailable = 69;
    static constexpr int s_timedOut = 75;
    static constexpr int s_interrupted = 128 + SIGINT;
    static constexpr int s_terminated = 128 + SIGTERM;

    /// The arguments configure the bus.
    explicit CliTest(const QString &settings = {})
        : m_bus(settings)
    {
        prepare(m_tavo);
        prepare(m_other);
    }

    void TearDown() override
    {
        if (HasFailure()) {
            std::cout << "The program wrote:\n"
                      << m_tavo.output() << m_tavo.error() << "The other one wrote:\n"
                      << m_other.output() << m_other.error() << "The host wrote:\n"
                      << (m_host ? m_host->log().toStdString() : std::string()) << std::endl;
        }
    }

    void prepare(Program &program) const
    {
        program.setEnvironment("TAVO_BUS", m_bus.address());
        program.setEnvironment("QT_NO_GLIB", "1");
    }

    void startHost(const QJsonArray &more = {}, const QJsonObject &limits = {})
    {
        m_host = std::make_unique<HostProcess>();
        const QJsonObject devices{{"mainDevice", "null"}, {"notificationsDevice", "null"}};
        QJsonArray modules{"powermanager", QJsonObject{{"name", "player"}, {"config", devices}},
                           "notifications",
                           QJsonObject{{"name", "dbus"},
                                       {"config", QJsonObject{{"bus", m_bus.address()},
                                                              {"sounds", allSounds()},
                                                              {"limits", limits}}}}};
        for (const QJsonValue &module : more) {
            modules.append(module);
        }
        m_host->setConfiguration({{"modules", modules}});
        ASSERT_TRUE(m_host->startReady()) << m_host->log().toStdString();
        ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
    }

    static QJsonObject allSounds()
    {
        return {{"schemes", QJsonArray{"file", "data", "http"}},
                {"folders", QJsonArray{"/"}},
                {"hosts", QJsonArray{"127.0.0.1:1"}}};
    }

    /// Runs the program and returns its exit code.
    int run(const QStringList &arguments, const QByteArray &input = {})
    {
        return m_tavo.run(arguments, input);
    }

    /// What the program has printed, as JSON.
    QJsonValue json() const
    {
        const QByteArray text = QByteArray::fromStdString("[" + m_tavo.output() + "]");
        const QJsonDocument document = QJsonDocument::fromJson(text);
        EXPECT_EQ(document.array().size(), 1) << m_tavo.output();
        return document.array().first();
    }

    /// A line as JSON.
    static QJsonObject object(const std::string &line)
    {
        return QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
    }

    /// A sound of 0.1 s.
    static QByteArray sound()
    {
        constexpr quint32 rate = 8000;
        const QByteArray samples(rate / 10 * 2, '\0');
        const auto number = [](auto value) {
            const auto little = qToLittleEndian(value);
            return QByteArray(reinterpret_cast<const char *>(&little), sizeof little);
        };
        return "RIFF" + number(quint32(36 + samples.size())) + "WAVEfmt " + number(quint32(16)) +
               number(quint16(1)) + number(quint16(1)) + number(rate) + number(rate * 2) +
               number(quint16(2)) + number(quint16(16)) + "data" + number(quint32(samples.size())) +
               samples;
    }

    /// A file with that sound, in the host's folder. Written once, as the host may be reading
    /// it.
    QString soundFile(const QString &name = "sound.wav")
    {
        QString &file = m_soundFiles[name];
        if (file.isEmpty()) {
            file = m_host->writeFile(name, sound());
        }
        return file;
    }

    PrivateBus m_bus;
    std::unique_ptr<HostProcess> m_host;
    QHash<QString, QString> m_soundFiles; ///< by name
    Program m_tavo{QStringLiteral(TAVO_PROGRAM)};
    Program m_other{QStringLiteral(TAVO_PROGRAM)}; ///< another run of the program
};
