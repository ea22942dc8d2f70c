// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/attention/HostAttention.h"

#include <QAbstractListModel>
#include <QTimer>
#include <QVector>

/// The notifications of the past, the newest first, for a view that reads more of them when its last one
/// comes into sight. All texts are limited.
///
/// Follows the host's history: rows come, change and go as their notifications do, among the newest maxUpdated.
/// If more than can be read at once have come meanwhile, it begins again with the newest ones.
class HistoryModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(bool isReading READ isReading NOTIFY changed)
    Q_PROPERTY(QString failure READ failure NOTIFY changed)

public:
    enum Role {
        NumberRole = Qt::UserRole,
        TitleRole,
        TextRole,
        SenderRole,
        TimeRole,
        OutcomeRole,
        MissedRole
    };

    static constexpr int maxUpdated = 200;

    explicit HistoryModel(HostAttention &attention, QObject *parent = nullptr);

    /// Reads the newest ones again; only those that nobody has seen, if so.
    void reload(bool isOnlyMissed);
    /// Takes no memory any more, and drops what is being read.
    void clear();

    int count() const { return m_records.size(); }
    bool isReading() const { return m_isReading; }
    QString failure() const
    {
        return m_failure;
    } ///< why there are no more; empty if nothing is wrong
    qint64 numberAt(int row) const { return m_records.at(row).number(); }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

    static QString timeText(qint64 time, const QDateTime &now);
    static QString stateText(TavoAttentionState::Enum state);

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void on_attention_historyChanged();
    void on_updateTimer_timeout();

private:
    void append(const TavoAttentionPage &page);
    void merge(const TavoAttentionPage &page);
    void insert(int row, const TavoAttentionRecord &record);
    void remove(int row);

    HostAttention &m_attention;
    QVector<TavoAttentionRecord> m_records;
    TavoAttentionQuery m_query;
    bool m_hasMore = false;
    bool m_isReading = false;
    QString m_failure;
    int m_reading = 0; ///< counts the calls of reload() and clear()
    bool m_isUpdating = false;
    QTimer m_updateTimer;
};
