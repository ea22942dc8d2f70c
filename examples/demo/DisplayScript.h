// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Script.h"
#include "Timeline.h"
#include <core/tavo.h>

#include <QHash>
#include <QList>
#include <QQueue>

/// Shows how a module uses display notifications: it opens them, closes them as a client and by
/// request, and observes the queue to learn which one is on display.
///
/// Writes to the timeline what it observes, and when.
///
/// Lives in the worker's thread. Owned by the worker.
class DisplayScript : public QObject
{
    Q_OBJECT

public:
    DisplayScript(CMNodes *nodes, Timeline *timeline, QObject *parent);

private Q_SLOTS:
    void on_queue_rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);

private:
    /// The queue at a moment. The first path is on display.
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

    /// Sends the request and calls back with the reply. Then handles what was observed meanwhile.
    void ask(const CMPath &path, const TavoValue &value,
             const std::function<void(const CMReply<QVariant> &)> &answered);

    void tellSights();
    void tell(const Sight &sight);
    /// How the message ended if this script ended it, else empty: its sender is told.
    QString kindOf(const CMPath &path) const;
    void note(const QString &event, const CMPath &path, const Sight &sight,
              const QString &kind = {});
    void note(const QString &event, const QString &id);

    Timeline *m_timeline; ///< owned by the worker
    Script m_script;
    CMPath m_menu;                  ///< the node of this module
    QHash<CMPath, QString> m_names; ///< of the notifications that this script opened, by path
    QHash<CMPath, QString> m_kinds; ///< how this script ended some of them
    /// A reply may come after the change that its request caused. So what is observed while a reply
    /// is due waits here: it may show a path without a name.
    int m_answersDue = 0;
    QQueue<Sight> m_sights;
    QList<CMPath> m_rows; ///< the queue as last reported
};
