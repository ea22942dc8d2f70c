// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// The text with U+FFFD for each character that a message can't hold.
QString sendableText(const QString &text);
