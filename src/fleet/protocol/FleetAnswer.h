// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QJsonValue>
#include <QString>

/// What has become of a call on one device. One for each call, sent again if the call is.
struct FleetAnswer
{
    enum class Kind { Shown, Sounding, Done, Error };

    QString id;     ///< of the call; isFleetName()
    QString device; ///< isDeviceName()
    Kind kind = Kind::Done;
    QJsonValue value; ///< Done: what the call gives
    QString error;    ///< Error: the reason

    QByteArray toJson() const;
    static Result<FleetAnswer> fromJson(const QByteArray &json);
};
