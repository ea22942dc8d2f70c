// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include "support/LogCapture.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"
#include "support/Text.h"

#include <core/tavo.h>

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QTimer>

/// The library under test: the built one, or the one that the environment names.
inline QString notificationsModule()
{
    return qEnvironmentVariable("TAVO_NOTIFICATIONS_MODULE",
                                QStringLiteral(TAVO_NOTIFICATIONS_MODULE));
}

/// The built notifications module among services and players that a test plays the part of, met
/// through the model only.
///
/// By default every request to a service is accepted, the device for notifications is "testdevice"
/// and the log is at TRACE. Everything that crosses the module's border is kept in order in
/// journal():
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
    void fireInactivityTimer(); ///< its time is over, now

    // The services.
    ScriptedService &services() { return m_services; }
    void setDucking(const ScriptedService::Script &script);
    void setResources(const ScriptedService::Script &script);
    /// Answers the oldest request to the path that has no answer yet.
    void answer(const CMPath &path);
    void refuse(const CMPath &path, const QString &message = "no"_s);
    /// Sends the power manager's message and gives the answer.
    CMReply<QVariant> revoke(TavoPowerManagerRevokeMessageType::Enum type,
                             const TavoList<TavoPowerManagerResources::Enum> &resources = {
                                 TavoPowerManagerResources::Audio});

    // Requests, answered when they return.
    static TavoNotificationPlayerItem item(const QString &id, int priority = 1);
    CMReply<QVariant> enqueue(const TavoNotificationPlayerItem &item);
    CMReply<QVariant> enqueue(const QString &id, int priority = 1)
    {
        return enqueue(item(id, priority));
    }
    CMReply<QVariant> cancel(const QString &id);
    CMReply<QVariant> request(const CMPath &path, const QVariant &value);

    /// Queues it and expects it to play.
    ScriptedPlayer *play(const QString &id, int priority = 1);
    static ScriptedPlayer *scripted(const QString &id)
    {
        return ScriptedPlayers::instance().find(id);
    }

    /// Delivers every queued call. No timer runs meanwhile.
    static void settle();

    bool isPlaying() const;
    QStringList &journal() { return m_journal; }
    /// The journal's lines that begin with the id.
    QStringList journalOf(const QString &id) const;
    LogCapture &log() { return m_log; }

    /// How often that very record has been written.
    int logged(log4cplus::LogLevel level, const std::string &message) const;
    /// How often the function's line ("Enter" or "Leave") has been written with that text.
    int entered(log4cplus::LogLevel level, const std::string &function,
                const std::string &text) const;
    int left(log4cplus::LogLevel level, const std::string &function, const std::string &text) const;

    /// The paths of all requests so far, whoever sent them and whether or not a node is there.
    const QVector<CMPath> &requestedPaths() const { return m_requestedPaths; }

    /// Empties the log and starts a story.
    void beginStory();
    /// What has happened since, line by line in its order:
    ///   log records  "DEBUG Enter soundFinished: id: a", with a signature's function name only
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

    /// A line of the story that isn't a log record, and how many of those came before it.
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
