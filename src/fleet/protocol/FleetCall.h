// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QJsonValue>
#include <QString>
#include <QVector>

#include <optional>

/// What a device is asked for, by a message to its topic or that of a group.
struct FleetCall
{
    enum class Kind { Show, Sound, Notify, Say, Cancel, Call, Ping };

    /// A button of a message.
    struct Action
    {
        QString key;
        QString label;
    };

    /// Why a message is not a call. With the id and the sender, as far as they can be read, it can be answered.
    struct Bad : Failure
    {
        QString id;
        QString from;
    };

    /// The timeout of a call that does not say one: the device's.
    static constexpr int defaultTimeout = -1;

    QString id;   ///< the same one again is the same call, and is carried out once
    QString from; ///< who gets the answer; empty: no one
    Kind kind = Kind::Ping;
    qint64 expires = 0; ///< too late then, in ms since the epoch; 0: not said

    // Show and Notify; Say has the text, Sound the sound and the priority:
    QString title;
    QString text;
    QString icon;
    QString sound;                  ///< a name, a path or a URI
    int priority = 1;               ///< as in TavoNotificationItemPriority
    int timeoutMs = defaultTimeout; ///< 0: until it is closed
    QVector<Action> actions;
    bool isEverywhere = false; ///< an end on one device cancels it on all devices of the group

    qint64 at = 0;    ///< Sound: when it starts, in ms since the epoch; 0: now
    QString target;   ///< Cancel: the id of the call that is cancelled
    QString path;     ///< Call: of a node
    QJsonValue value; ///< Call: for the node

    QByteArray toJson() const;
    static Result<FleetCall, Bad> fromJson(const QByteArray &json);

    static QString kindName(Kind kind);
    static std::optional<Kind> kindFromName(const QString &name);
};
