// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QTimer>

/// Counts what sources send beyond their rate. A flood is over when its source has kept to the rate for some
/// seconds; one that lasts is reported every five minutes.
///
/// Owned by the worker, used in its thread. While there is no flood, no timer runs.
class Floods : public QObject
{
    Q_OBJECT

public:
    Floods();

    /// The period of the sources' rate. For so long, or at most 10 s, a source must keep to it.
    void setPeriod(int ms);

    /// One more, which people would see or hear otherwise, or not. Returns how many there are in this flood.
    int count(const QString &source, const QString &application, bool isKept);

Q_SIGNALS:
    /// A flood is over, or has lasted for long. So many were kept from people only because of it; at least
    /// one.
    void over(const QString &source, const QString &application, int count);

private Q_SLOTS:
    void on_timer_timeout();

private:
    struct Flood
    {
        QString application;
        int count = 0; ///< all
        int kept = 0;
        qint64 begin = 0;
        qint64 last = 0;
    };

    qint64 endOf(const Flood &flood) const;

    QMap<QString, Flood> m_floods; ///< by source
    QElapsedTimer m_clock;
    QTimer m_timer;
    int m_quietMs = 0;
};
