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

/// The notifications module out of its library, among scripted services and players, with the
/// properties that hold whatever it is sent. Each is checked at the event that could break it.
class FuzzedNotifications
{
public:
    using Node = NotificationsNode;

    FuzzedNotifications();
    ~FuzzedNotifications();
    FuzzedNotifications(const FuzzedNotifications &) = delete;
    FuzzedNotifications &operator=(const FuzzedNotifications &) = delete;

    /// Sends a value and delivers what comes of it.
    void request(Node node, const QVariant &value);

    /// Sends values with nothing delivered between them; only the answers are looked at.
    void requestAtOnce(const QVector<QPair<Node, QVariant>> &requests);

    // What happens around the module. Numbers choose among what there is.
    void closeNode(const CMPath &path);
    void changeRows(const CMPath &path, const QStringList &changes);
    void endPlayer(int which, int how);
    void failPlay(const QString &id) { ScriptedPlayers::instance().failPlay(id); }
    void fireTimer(int which);
    void setDucking(int script) { setScript(TavoPlayerMainAudioDuckingPath(), script); }
    void setResources(int script) { setScript(TavoPowerManagerResourceRequestPath(), script); }
    void answerKept(int which, bool accept);

    /// A path that the module has made, or of a node of its own.
    QVariant knownPath(int which) const;

    /// Lets everything come to its end: every request is answered, every sound ends, every timer
    /// runs out. Then nothing may be left.
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

    /// What the contract says of the answer, from the value and the state before.
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
    /// Accepted sounds with the response path here, by id, less those that have been reported.
    QHash<QString, int> m_awaited;
    QSet<QString> m_started;
    LoadedModule m_module;
};
