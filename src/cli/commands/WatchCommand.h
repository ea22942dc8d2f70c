// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"

#include <QHash>
#include <QSet>
#include <QStringList>

/// Prints what is at the path, and then each change, until interrupted.
class WatchCommand : public Command
{
    Q_OBJECT

public:
    WatchCommand(const Options &options, TavoClient &client, Terminal &terminal);

    void start() override;
    void interrupt(int signal) override;

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_client_valueChanged(const CMPath &path, const QVariant &value);
    void on_client_rowsChanged(const CMPath &path, const QStringList &changes, int first,
                               int count);
    void on_client_nodeChanged(const CMPath &path, bool published);
    void on_client_changesDropped(const CMPath &path, uint count);
    void on_client_subscriptionFailed(const CMPath &path, const CMError &error);

private:
    enum class Kind { Value, Rows, Any };
    struct Followed
    {
        CMPath path;
        Kind kind;
    };

    void follow(const CMPath &path, Kind kind);
    void readAll();
    void read(const Followed &followed);
    void readValue(const CMPath &path);
    void readRows(const CMPath &path);
    void on_rows_refused(const CMPath &path, const CMError &error);
    void printRows(const CMPath &path, const QVariantList &rows);
    /// Ends the program when its output can't be written any more.
    void report(const CMPath &path, const QVariantHash &fields, const QString &text);
    void printChange(const CMPath &path, const QVariantHash &fields, const QString &text);

    QVector<Followed> m_followed;
    bool m_wasAvailable = false;
    /// The rows that are being read, with the changes that have come since.
    struct Reading
    {
        QStringList changes;
        bool isDue = false;
    };
    QHash<CMPath, Reading> m_readings;
    QSet<CMPath> m_withoutValue; ///< nodes that are lists or requests
};
