// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

/// The line, from 1, of a value in a JSON object that has no syntax errors, by its key as
/// TavoConfiguration names it, such as "rules[3].when.source". If there is no such value, the line of what
/// should hold it.
int lineInJson(const QByteArray &json, const QString &key);
