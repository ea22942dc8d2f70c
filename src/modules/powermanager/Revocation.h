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
/// has passed, and then sends each one the post-revoke message. Deleting it ends the revocation
/// without finished().
///
/// Used in the worker's thread.
class Revocation : public QObject
{
    Q_OBJECT

public:
    Revocation(const QList<RevokedModule> &modules, int timeoutMs, QObject *parent);

    /// Call once.
    void start();

Q_SIGNALS:
    /// Emitted once, after the post-revoke messages; from inside start() if there are no holders.
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
