// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// How a shown message or a sound has ended on a device.
struct FleetEvent
{
    enum class End {
        Expired,   ///< its timeout is over
        Closed,    ///< cancelled by a call or a program
        Dismissed, ///< closed by a person
        Action,    ///< a person has chosen an action
        Finished,  ///< a sound that was played to its end
        Failed     ///< it could not be shown or played to the end
    };

    QString id; ///< of the call
    QString device;
    End end = End::Closed;
    QString action;  ///< the key of the action that was chosen
    qint64 time = 0; ///< in ms since the epoch, by the clock of the device

    QByteArray toJson() const;
    static Result<FleetEvent> fromJson(const QByteArray &json);

    static QString endName(End end);
    static std::optional<End> endFromName(const QString &name);
};
