// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/attention/AttentionView.h"
#include "display/attention/SideWindow.h"

#include <QObject>
#include <QTimer>

/// The mark that says that people do not want to be disturbed, and the history. Neither appears without the
/// host's module for attention.
class AttentionWindows : public QObject
{
    Q_OBJECT

public:
    AttentionWindows(HostAttention &attention, QQmlEngine &engine, QObject *parent = nullptr);

    /// May be called again.
    void setConfiguration(const DisplayConfiguration &configuration);

    /// Opens the history. Returns false if the host keeps none.
    bool openHistory();

private:
    void update();
    void closeHistory();

    HostAttention &m_attention;
    AttentionView m_view;
    DisplayConfiguration::Mark m_markMode = DisplayConfiguration::Mark::DoNotDisturb;
    SideWindow m_mark;
    SideWindow m_history;
};
