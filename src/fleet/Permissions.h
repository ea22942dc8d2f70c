// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "fleet/protocol/FleetCall.h"

#include <QStringList>

class TavoConfiguration;

/// What the fleet may ask of this device, whoever asks.
class Permissions
{
public:
    /// Reads the keys of the section "allow". Throws a std::runtime_error.
    static Permissions read(TavoConfiguration section);

    /// Why the call is not allowed, if it isn't.
    std::optional<Failure> refusal(const FleetCall &call) const;

    /// What a player gets for the name of a sound: a URI or a path.
    Result<QString> sound(const QString &name) const;

    bool allows(FleetCall::Kind call) const { return m_calls.contains(call); }
    /// Where the sounds are that calls name.
    const QString &soundFolder() const { return m_soundFolder; }
    int allowedPriority(int priority) const { return qMin(priority, m_maxPriority); }

    /// The names of the calls, as the device tells them.
    QStringList calls() const;

private:
    bool isAllowedPath(const QString &path) const;

    QVector<FleetCall::Kind> m_calls;
    QStringList m_paths;
    QString m_soundFolder;
    QStringList m_soundSchemes;
    int m_maxPriority = 3;
};
