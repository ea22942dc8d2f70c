// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

/// A module that has to give back what it holds.
struct RevokedModule
{
    QString name;
    CMPath revokePath;
    CMPath postRevokePath;
    TavoList<TavoPowerManagerResources::Enum> resources;
};

/// Takes the resources from their holders: tells each that they are gone, waits until all have
/// answered or the time is over, then gives each the notice.
///
/// Thread: its worker's. Deleted before its end, it tells nobody anything more and doesn't report.
class Revocation : public QObject
{
    Q_OBJECT

public:
    Revocation(const QList<RevokedModule> &modules, int timeoutMs, QObject *parent);

    /// Call once.
    void start();

Q_SIGNALS:
    /// Once, after the notices have been sent; from within start() when there is nobody to tell.
    void finished();

private Q_SLOTS:
    void on_timer_timeout();

private:
    void revoke(const RevokedModule &module);
    void takeAnswer(const QString &module, const CMVoidReply &reply);
    void finish();

    const QList<RevokedModule> m_modules;
    QStringList m_unanswered;
    QTimer m_timer;
};
