// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/requests/Steps.h"
#include "support/LoadedModule.h"
#include "support/scripted/ScriptedPlayers.h"
#include "support/scripted/ScriptedService.h"
#include <core/tavo.h>

#include <QHash>
#include <QSet>

/// The notifications module, loaded from its library, with scripted services and players. Checks
/// what must always hold, at each event that could break it.
class FuzzedNotifications
{
public:
    using Node = NotificationsNode;

    FuzzedNotifications();
    ~FuzzedNotifications();
    FuzzedNotifications(const FuzzedNotifications &) = delete;
    FuzzedNotifications &operator=(const FuzzedNotifications &) = delete;

    /// Sends a value and delivers the events that follow.
    void request(Node node, const QVariant &value);

    /// Sends values and delivers no events between them. Only the replies are checked.
    void requestAtOnce(const QVector<QPair<Node, QVariant>> &requests);

    // Events around the module. The numbers choose among what exists.
    void closeNode(const CMPath &path);
    void changeRows(const CMPath &path, const QStringList &changes);
    void endPlayer(int which, int how);
    void failPlay(const QString &id) { ScriptedPlayers::instance().failPlay(id); }
    void fireTimer(int which);
    void setDucking(int script) { setScript(TavoPlayerMainAudioDuckingPath(), script); }
    void setResources(int script) { setScript(TavoPowerManagerResourceRequestPath(), script); }
    void answerKept(int which, bool accept);

    /// A path that the module has published, or the path of a node made here.
    QVariant knownPath(int which) const;

    /// Lets everything end: every request is answered, every sound ends, every timer fires. Then
    /// checks that nothing is left.
    void finish();

private:
    enum class PlayerState { Made, Playing, Paused, Stopping, Ended };
    struct Published
    {
        bool isPlaying;
        QVariantList rows;
        std::size_t players;
        std::size_t requests;
        bool operator==(const Published &other) const;
    };

    static CMPath path(Node node);
    void setScript(const CMPath &path, int script);
    void keep(const CMSetDataRequest &request) { m_kept.append(request); }
    Published published();
    static QVariantList rows();
    static bool isPlaying();

    /// Checks the reply against the value and the state before.
    void checkAnswer(Node node, const QVariant &value, const CMReply<QVariant> &reply,
                     const Published &before);
    void checkForm(Node node, const CMReply<QVariant> &reply);
    void noteAccepted(Node node, const QVariant &value, const CMReply<QVariant> &reply);
    void on_response(const CMSetDataRequest &request);
    void on_playerCall(const QString &call, const QString &id);
    QVector<ScriptedPlayer *> playersIn(std::initializer_list<PlayerState> states) const;
    bool goOn();
    QObject *controller(const char *className) const;

    ScriptedService m_services;
    QList<CMSetDataRequest> m_kept;
    std::size_t m_serviceRequests = 0;
    QHash<ScriptedPlayer *, PlayerState> m_players;
    QStringList m_paths;     ///< of opened notifications
    QSet<QString> m_usedIds; ///< of accepted sounds
    /// Accepted sounds whose response path is here, by id, except those that have ended.
    QHash<QString, int> m_awaited;
    QSet<QString> m_started;
    LoadedModule m_module;
};
