// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include "support/LogCapture.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"
#include "support/Text.h"
#include <core/tavo.h>

#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

/// The library under test: the built one unless the environment names another.
inline QString notificationsModule()
{
    return qEnvironmentVariable("TAVO_NOTIFICATIONS_MODULE",
                                QStringLiteral(TAVO_NOTIFICATIONS_MODULE));
}

/// The built notifications module with scripted services and players around it. The test talks to it
/// only through the model.
///
/// By default the services accept every request, the device for notifications is "testdevice" and the
/// log level is TRACE. journal() lists the module's requests and calls of players in their order:
///   requests   "register", "duck", "unduck", "acquire", "release"
///   responses  "<id> started", "<id> finished", "<id> cancelled", "<id> failed"
///   players    "<id> construct", "<id> play", "<id> pause", "<id> stop", "<id> destroy"
class NotificationsTest : public testing::Test
{
protected:
    NotificationsTest();
    ~NotificationsTest() override;

    // The module.
    void load(); ///< calls worker_create as a host does
    void unload();
    CMWorker *worker() const { return m_worker.get(); }
    QObject *player() const; ///< the sound controller
    QTimer *inactivityTimer() const;
    void fireInactivityTimer();

    // The services.
    ScriptedService &services() { return m_services; }
    void setDucking(const ScriptedService::Script &script);
    void setResources(const ScriptedService::Script &script);
    /// Answers the oldest open request to the path.
    void answer(const CMPath &path);
    void refuse(const CMPath &path, const QString &message = "no"_s);
    /// Sends the power manager's message and returns the reply.
    CMReply<QVariant> revoke(TavoPowerManagerRevokeMessageType::Enum type,
                             const TavoList<TavoPowerManagerResources::Enum> &resources = {
                                 TavoPowerManagerResources::Audio});

    // Requests to the module. They have been answered on return.
    static TavoNotificationPlayerItem item(const QString &id, int priority = 1);
    CMReply<QVariant> enqueue(const TavoNotificationPlayerItem &item);
    CMReply<QVariant> enqueue(const QString &id, int priority = 1)
    {
        return enqueue(item(id, priority));
    }
    CMReply<QVariant> cancel(const QString &id);
    CMReply<QVariant> request(const CMPath &path, const QVariant &value);

    /// Queues an item and expects it to play.
    ScriptedPlayer *play(const QString &id, int priority = 1);
    static ScriptedPlayer *scripted(const QString &id)
    {
        return ScriptedPlayers::instance().find(id);
    }

    /// Delivers every queued call. No timer fires meanwhile.
    static void settle();

    bool isPlaying() const;
    QStringList &journal() { return m_journal; }
    /// The journal's lines for that id, without the id.
    QStringList journalOf(const QString &id) const;
    LogCapture &log() { return m_log; }

    /// How often exactly this record has been logged.
    int logged(log4cplus::LogLevel level, const std::string &message) const;
    /// How often the function's entry or exit line has been logged with that text.
    int entered(log4cplus::LogLevel level, const std::string &function,
                const std::string &text) const;
    int left(log4cplus::LogLevel level, const std::string &function, const std::string &text) const;

    /// The paths of all requests so far, including the test's own and those to missing nodes.
    const QVector<CMPath> &requestedPaths() const { return m_requestedPaths; }

    /// Starts a story with an empty log.
    void beginStory();
    /// What has happened since beginStory(), line by line:
    ///   log records  "DEBUG Enter soundFinished: id: a", with the function's name for its signature
    ///   players      "a play", as in the journal
    ///   requests     "to /test/response", at the time of sending
    ///   notes        as given to note()
    std::vector<std::string> story() const;
    void note(const std::string &line);

    static CMPath responsePath() { return CMPath("/test/response"_s); }
    static QString message(const CMReply<QVariant> &reply)
    {
        return reply.error().message().toString();
    }

private:
    int traced(log4cplus::LogLevel level, const std::string &line) const;
    void on_response(const CMSetDataRequest &request);

    /// A line of the story that is not a log record, and how many records are before it.
    struct Note
    {
        std::size_t after;
        std::string line;
    };

    LogCapture m_log;
    ScriptedService m_services;
    QStringList m_journal;
    QVector<CMPath> m_requestedPaths;
    bool m_tellsStory = false;
    std::vector<Note> m_notes;
    QHash<CMPath, std::size_t> m_answered;
    std::unique_ptr<CMWorker> m_worker;
};
