// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

/// A value for people: a scalar unchanged, a record as a line for each field, a list as a line with a
/// dash for each element. Fields are sorted, nested values indented.
QString valueText(const QVariant &value);
