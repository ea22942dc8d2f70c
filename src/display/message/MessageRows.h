// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/message/Message.h"

#include <QVariantList>

/// The most rows of a message that are read: its text and its buttons.
constexpr int maxMessageRows = 66;

/// The message of a node with this title and these rows, which may have any content.
Message messageFromRows(const CMPath &path, const QString &title, const QVariantList &rows);
