// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <client/TavoClient.h>

#include <QObject>
#include <QVector>

#include <functional>

/// Notifications of the past, the newest first.
struct PastNotifications
{
    QVector<TavoAttentionRecord> records;
    bool isCut = false; ///< there are more
};

/// Reads up to `max` notifications of the past, page by page. Calls the function once with what it found,
/// or with an error, unless the context goes away before.
void readHistory(TavoClient &client, QObject *context, const TavoAttentionQuery &query, int max,
                 const std::function<void(const PastNotifications &, const CMError &)> &use);
