// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/tavo.h"

#include <QObject>
#include <QThread>

#include <vector>

/// Of the node that a test publishes.
inline const CMPath path(QStringLiteral("/test/node"));

inline const QStringList change{QStringLiteral("changed")};
inline const CMError broken(QStringLiteral("Test"), "broken");

inline QVariant carried(int value)
{
    return TavoValue().setInt_(value).__variant();
}

/// Keeps the requests of a node, unanswered.
class RequestKeeper : public QObject
{
public:
    void on_node_activated(const CMSetDataRequest &request)
    {
        requests.push_back(request);
        thread = QThread::currentThread();
    }

    std::vector<CMSetDataRequest> requests;
    const QThread *thread = nullptr;
};

/// Answers each request with its own value.
class Echo : public QObject
{
public:
    void on_node_activated(const CMSetDataRequest &request)
    {
        ++calls;
        thread = QThread::currentThread();
        request.reply().setValue(request.value());
    }

    int calls = 0;
    const QThread *thread = nullptr;
};

struct RowsReport
{
    CMPath path;
    QStringList changes;
    int first;
    int count;

    bool operator==(const RowsReport &other) const
    {
        return path == other.path && changes == other.changes && first == other.first &&
               count == other.count;
    }
};

inline void PrintTo(const RowsReport &report, std::ostream *stream)
{
    *stream << report.path << ' ' << report.changes.join(',') << ' ' << report.first << '+'
            << report.count;
}

/// Records the changes that are reported to it.
class ChangeRecorder : public QObject
{
public:
    void on_rows_changed(const CMPath &path, const QStringList &changes, int first, int count)
    {
        rows.push_back({path, changes, first, count});
        thread = QThread::currentThread();
    }
    void on_value_changed(const CMPath &path, const QVariant &value)
    {
        values.push_back({path, value});
        thread = QThread::currentThread();
    }
    void on_node_changed(const CMPath &path, bool published)
    {
        nodes.push_back({path, published});
        thread = QThread::currentThread();
    }

    std::vector<RowsReport> rows;
    std::vector<std::pair<CMPath, QVariant>> values;
    std::vector<std::pair<CMPath, bool>> nodes;
    const QThread *thread = nullptr;
};
