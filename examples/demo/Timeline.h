// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>
#include <QJsonObject>
#include <QString>

/// Writes what happens, as it happens, one JSON object a line: {"t": seconds, "event": ..., ...}.
/// The seconds are those of the monotonic clock, so that others can lay recordings beside them.
///
/// Thread: its owner's.
class Timeline
{
public:
    /// An empty file name writes nowhere.
    explicit Timeline(const QString &fileName);

    void note(const QString &event, QJsonObject details = {});

private:
    QFile m_file;
};
