// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/tavohash.h"

#include "core/base/stream.h"

std::ostream &operator<<(std::ostream &stream, const TavoHash &record)
{
    return stream << record.__variant();
}
