// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CliTest.h"

/// The program, and a host with the module for attention.
class CliAttentionTest : public CliTest
{
protected:
    explicit CliAttentionTest(const QByteArray &settings = "{}")
        : m_settings(settings)
    {
    }

    void SetUp() override
    {
        m_file = m_folder.filePath("attention.json");
        QFile file(m_file);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(m_settings);
        file.close();
        // "Speaks" with a file, instead of a program that need not be installed.
        const QString words = m_folder.filePath("words.wav");
        QFile wav(words);
        ASSERT_TRUE(wav.open(QIODevice::WriteOnly));
        wav.write(sound());
        wav.close();
        const QJsonObject speech{{"command", QJsonArray{"cat", words}},
                                 {"folder", m_folder.filePath("speech")}};
        const QJsonObject config{{"settings", m_file},
                                 {"history", QJsonObject{{"file", m_folder.filePath("h.db")}}},
                                 {"speech", speech}};
        startHost({QJsonObject{{"name", "attention"}, {"config", config}}}, m_limits);
    }

    /// Sends a notification and expects success.
    void notify(const QStringList &arguments)
    {
        ASSERT_EQ(m_other.run(QStringList{"notify"} + arguments), s_good) << m_other.error();
    }

    void setDoNotDisturb(const char *state)
    {
        ASSERT_EQ(m_other.run({"dnd", state}), s_good) << m_other.error();
    }

    QTemporaryDir m_folder;
    QByteArray m_settings;
    QString m_file;       ///< with the settings
    QJsonObject m_limits; ///< of the module dbus
};
