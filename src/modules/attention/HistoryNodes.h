// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "history/History.h"
#include <core/tavo.h>

#include <QObject>

/// Serves the history as nodes of the model.
///
/// Owned by the worker, used in its thread.
class HistoryNodes : public QObject
{
    Q_OBJECT

public:
    /// The file is the history's; empty if nothing is remembered.
    HistoryNodes(CMNodes *nodes, History &history, const QString &file);

private Q_SLOTS:
    void on_history_activated(const CMSetDataRequest &request);
    void on_markSeen_activated(const CMSetDataRequest &request);
    void on_history_changed();
    void on_history_missedChanged(int missed);
    void on_history_failed(const QString &reason);
    void on_history_recovered(int lost);
    void on_history_damaged(const QString &reason);

private:
    void publishState();

    History &m_history;
    const QString m_file;
    QString m_reason; ///< why notifications are not remembered; empty if they are
    qint64 m_changes = 0;
    CMValueNode *m_state;  ///< owned by the node set
    CMValueNode *m_missed; ///< owned by the node set
};
