// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "AlarmClock.h"
#include "Entrance.h"
#include "QuietMemory.h"
#include <core/tavo.h>

#include <QMap>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <attention/DoNotDisturb.h>

/// Publishes whether people want to be disturbed, takes their choices, and counts what they miss. Choices and
/// counts outlast a restart.
///
/// Owned by the worker, used in its thread.
class QuietTimes : public QObject
{
    Q_OBJECT

public:
    /// The file may be empty: then nothing outlasts a restart.
    QuietTimes(CMNodes *nodes, Entrance &entrance, const QString &file);
    ~QuietTimes() override;

    DoNotDisturb &doNotDisturb() { return m_doNotDisturb; }

    bool isOn() const { return m_isOn; }

    void setSettings(const DoNotDisturbSettings &settings);

    /// Publishes the state from now on. Called once, after the settings have been read.
    void start();

    /// So many of a program of the user were kept from people.
    void countMissed(const QString &user, const QString &program, int count);

    /// The same in a list. False if it has too many other programs.
    static bool addMissed(QMap<QString, int> &missed, const QString &program, int count);

Q_SIGNALS:
    /// A time without disturbance is over, perhaps while the host did not run. So many were kept from people,
    /// by program.
    void ended(const QMap<QString, int> &missed);

private Q_SLOTS:
    void on_set_activated(const CMSetDataRequest &request);
    void on_inhibit_activated(const CMSetDataRequest &request);
    void on_alarm_rang();
    void on_save_timeout();

private:
    TavoAttentionDoNotDisturb state(qint64 now) const;

    /// Publishes the state, and sets the alarm for its next change.
    void update();

    /// Writes the file, at once if it has not been written lately.
    void save();
    QuietMemory memory() const;

    Entrance &m_entrance;
    const QString m_file;
    DoNotDisturb m_doNotDisturb;
    QMap<QString, TavoAttentionInhibition> m_inhibitions; ///< by id
    QMap<QString, int> m_missed;
    QMap<QString, int> m_programs; ///< in m_missed, by the user who named them first
    bool m_isOn = false;
    bool m_isStarted = false;
    CMValueNode *m_node; ///< owned by the node set
    AlarmClock m_alarm;
    QTimer m_save; ///< runs after a write, or while counts wait: many changes cost one write
    bool m_isUnsaved = false;
    QThreadPool m_writer; ///< a disk may be busy for seconds
};
