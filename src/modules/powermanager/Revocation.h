// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

/// A module with the resources that are revoked from it.
struct RevokedModule
{
    QString name;
    CMPath revokePath;
    CMPath postRevokePath;
    TavoList<TavoPowerManagerResources::Enum> resources;
};

/// Tells the holders that their resources are revoked, waits until all have answered or the timeout
/// is over, and then sends each the post-revoke message. Deleting it ends all that without finished().
///
/// Thread: the worker's.
class Revocation : public QObject
{
    Q_OBJECT

public:
    Revocation(const QList<RevokedModule> &modules, int timeoutMs, QObject *parent);

    /// Call once.
    void start();

Q_SIGNALS:
    /// Emitted once, after the post-revoke messages; from within start() when there are no holders.
    void finished();

private Q_SLOTS:
    void on_timer_timeout();

private:
    void revoke(const RevokedModule &module);
    void takeReply(const QString &module, const CMVoidReply &reply);
    void finish();

    const QList<RevokedModule> m_modules;
    QStringList m_unanswered;
    QTimer m_timer;
};
