// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Timeline.h"

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

/// Steps in a fixed order: each waits for an event of the timeline, then for some milliseconds, and
/// acts. While one waits for its event, those behind it don't see theirs.
///
/// Thread and owner: the worker's, whoever acts.
class Script : public QObject
{
    Q_OBJECT

public:
    Script(Timeline *timeline, QObject *parent);

    /// The name is the one that Timeline::noted() gives the event.
    void step(const char *after, int delay, std::function<void()> act);

private Q_SLOTS:
    void on_timeline_noted(const QString &name);

private:
    struct Step
    {
        QString after;
        int delay;
        std::function<void()> act;
    };

    std::vector<Step> m_steps;
    std::size_t m_next = 0; ///< the step that waits
};
