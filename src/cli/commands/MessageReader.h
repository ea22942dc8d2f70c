// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <client/TavoClient.h>

#include <QObject>
#include <QVector>

#include <functional>
#include <memory>

/// A message on the display, as its node tells of it.
struct ShownMessage
{
    CMPath path;
    QString title;
    QString text;

    QVariantHash toHash() const;
};

/// The messages of the display's queue, the one on display first.
struct ShownMessages
{
    QVector<ShownMessage> messages;
    bool isCut = false; ///< there are more than were asked for

    QVariantList toList() const;
};

/// Reads the queue, up to that many of it, and the title and text of each. One that closes meanwhile
/// has neither. The function is called once, unless the context goes; with an error when there is no
/// queue.
void readMessages(TavoClient &client, QObject *context, int most,
                  const std::function<void(const ShownMessages &, const CMError &)> &use);
