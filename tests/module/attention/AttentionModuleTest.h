// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include "support/LogCapture.h"
#include "support/Request.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"
#include "support/Text.h"
#include <core/tavo.h>

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

/// The module in front of the notifications module, both as devices run them, with scripted players and
/// services. The test talks to them only through the model.
class AttentionModuleTest : public testing::Test
{
protected:
    using Priority = TavoNotificationItemPriority;
    using End = TavoAttentionEnd;
    using State = TavoAttentionState;

    AttentionModuleTest();

    /// Loads the module; again if it is loaded.
    void load();
    void unload() { m_attention.reset(); }
    void unloadNotifications() { m_notifications.reset(); }

    /// Writes the settings. If the module is loaded, waits until it has read them.
    void setSettings(const QByteArray &json);
    void writeSettings(const QByteArray &json);

    static TavoAttentionItem message(const QString &title, const QString &source = "mail"_s);
    static TavoAttentionItem withSound(TavoAttentionItem item, const QString &sound);

    /// Sends the request and expects success.
    TavoAttentionOutcome notify(const TavoAttentionItem &item);
    static Request requestNotify(const TavoAttentionItem &item)
    {
        return {TavoAttentionNotifyPath(), TavoValue().setAttentionItem(item)};
    }
    static Request requestClose(const QString &id)
    {
        return {TavoAttentionClosePath(), TavoValue().setString_(id)};
    }

    /// The titles of the messages in the display's queue.
    static std::vector<QString> displayed();
    static CMPath displayedPath(int index = 0);

    static TavoRoles rowOf(const CMPath &path, int index = 0);

    /// Waits until the sound plays.
    static ScriptedPlayer *playing(const QString &id);

    /// Waits until the notification has ended, and returns its end.
    TavoAttentionEnded endOf(const QString &id);
    const QVector<TavoAttentionEnded> &ends() const { return m_ends; }

    /// The records of the past, the newest first.
    std::vector<TavoAttentionRecord> history(const TavoAttentionQuery &query = {});

    static TavoAttentionDoNotDisturb doNotDisturb()
    {
        return valueAt(TavoAttentionDoNotDisturbPath()).attentionDoNotDisturb();
    }
    static Request setDoNotDisturb(bool on, qint64 until = 0);

    /// The program that speaks from the next load() on; a shell's script.
    void setSpeechCommand(const QStringList &command) { m_speechCommand = command; }
    void setSpeechScript(const QString &script) { setSpeechCommand({"sh"_s, "-c"_s, script}); }

    void setSpeechSounds(int count) { m_speechSounds = count; }
    void setSpeechTimeout(int ms) { m_speechTimeoutMs = ms; }

    LogCapture &log() { return m_log; }
    ScriptedService &services() { return m_services; }
    QString settingsFile() const { return m_folder.filePath("etc/attention.json"_s); }
    QString historyFile() const { return m_folder.filePath("history.db"_s); }

private:
    LogCapture m_log{"Attention"};
    QTemporaryDir m_folder;
    QStringList m_speechCommand;
    int m_speechTimeoutMs = 10000;
    int m_speechSounds = 100;
    ScriptedService m_services{QStringLiteral("services")};
    std::unique_ptr<LoadedModule> m_notifications;
    std::unique_ptr<LoadedModule> m_attention;
    class Ends;
    std::shared_ptr<Ends> m_listener;
    QVector<TavoAttentionEnded> m_ends;
};
