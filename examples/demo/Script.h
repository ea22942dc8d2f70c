// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Timeline.h"

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

/// Steps in a fixed order. Each waits for an event of the timeline, then for some milliseconds, and
/// acts. Events that a later step waits for are missed until it is that step's turn.
///
/// Lives in the worker's thread. Owned by the object that acts.
class Script : public QObject
{
    Q_OBJECT

public:
    Script(Timeline *timeline, QObject *parent);

    /// The event's name is that of Timeline::noted().
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
