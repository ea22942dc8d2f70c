// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Script.h"
#include "Timeline.h"
#include <core/tavo.h>

#include <QHash>
#include <QList>
#include <QQueue>

/// Shows what a module does with display notifications: opens them, closes them as a client and by
/// request, and watches the queue to learn which one is on display.
///
/// What it sees goes to the timeline with the moment at which it was seen.
///
/// Thread and owner: the worker's, the worker.
class DisplayScript : public QObject
{
    Q_OBJECT

public:
    DisplayScript(CMNodes *nodes, Timeline *timeline, QObject *parent);

private Q_SLOTS:
    void on_queue_rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);

private:
    /// The queue at one moment; the first path is on display.
    struct Sight
    {
        Timeline::Moment moment;
        QList<CMPath> rows;
    };

    void writeScript();
    CMPath publishMenu(CMNodes *nodes) const;

    void open(const QString &id, const TavoNotificationDisplayItem &item);
    void close(const QString &id);
    void cancel(const QString &id);

    /// Sends the request; calls back with the answer, then goes through what was seen meanwhile.
    void ask(const CMPath &path, const TavoValue &value,
             const std::function<void(const CMReply<QVariant> &)> &answered);

    void tellSights();
    void tell(const Sight &sight);
    /// How a message of ours has ended; empty for what others have opened, who are told themselves.
    QString kindOf(const CMPath &path) const;
    void note(const QString &event, const CMPath &path, const Sight &sight,
              const QString &kind = {});
    void note(const QString &event, const QString &id);

    Timeline *m_timeline; ///< the worker's
    Script m_script;
    CMPath m_menu;                  ///< our own node, shown by reference
    QHash<CMPath, QString> m_names; ///< what we have opened, by its path
    QHash<CMPath, QString> m_kinds; ///< how we have ended some of it
    /// An answer may come behind the change that its request made, so what is seen while one is
    /// due has to wait: it may show what has no name yet.
    int m_answersDue = 0;
    QQueue<Sight> m_sights;
    QList<CMPath> m_rows; ///< the queue as last told
};
