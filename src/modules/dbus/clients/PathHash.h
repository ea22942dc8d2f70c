// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <cstddef>

/// For maps whose values can't be copied, which Qt's containers require.
struct PathHash
{
    std::size_t operator()(const CMPath &path) const { return qHash(path); }
};
