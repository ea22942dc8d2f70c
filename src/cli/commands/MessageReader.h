// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <client/TavoClient.h>

#include <QObject>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>

/// A message of the display.
struct ShownMessage
{
    CMPath path;
    QString title;
    QString text;
    std::optional<int> remaining{}; ///< milliseconds on display; only of the one that is shown

    QVariantHash toHash() const;
};

/// The first messages of the display's queue, in its order.
struct ShownMessages
{
    QVector<ShownMessage> messages;
    bool isCut = false; ///< there are more messages

    QVariantList toList() const;
};

/// Reads up to @p max messages of the queue, with three requests, or more if the replies would be too
/// large. A message that closes during this time has no title or text. Calls the function once,
/// unless the context is deleted first, and passes an error if there is no queue.
void readMessages(TavoClient &client, QObject *context, int max,
                  const std::function<void(const ShownMessages &, const CMError &)> &use);
