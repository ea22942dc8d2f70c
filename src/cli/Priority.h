// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/enumerations.h>

#include <optional>
#include <string>

/// Reads a priority's name, in any case, or an integer.
std::optional<TavoNotificationItemPriority::Enum> priorityFromText(const std::string &text);
