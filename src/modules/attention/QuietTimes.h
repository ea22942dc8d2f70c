// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AlarmClock.h"
#include <core/tavo.h>

#include <QMap>
#include <QObject>

#include <attention/DoNotDisturb.h>

/// Publishes whether people want to be disturbed, and takes their choices.
///
/// Owned by the worker, used in its thread.
class QuietTimes : public QObject
{
    Q_OBJECT

public:
    explicit QuietTimes(CMNodes *nodes);

    DoNotDisturb &doNotDisturb() { return m_doNotDisturb; }

    void setSettings(const DoNotDisturbSettings &settings);

Q_SIGNALS:
    /// A time without disturbance is over.
    void ended();

private Q_SLOTS:
    void on_set_activated(const CMSetDataRequest &request);
    void on_inhibit_activated(const CMSetDataRequest &request);

private:
    TavoAttentionDoNotDisturb state(qint64 now) const;

    /// Publishes the state, and sets the alarm for its next change.
    void update();

    DoNotDisturb m_doNotDisturb;
    QMap<QString, TavoAttentionInhibition> m_inhibitions; ///< by id
    bool m_isOn = false;
    CMValueNode *m_node; ///< owned by the node set
    AlarmClock m_alarm;
};
