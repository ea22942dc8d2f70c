// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <functional>

/// Reads bytes at an offset of a file. Returns false if there aren't that many.
using ReadAt = std::function<bool(void *target, std::size_t count, qint64 offset)>;
