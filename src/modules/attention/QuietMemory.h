// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMap>
#include <QString>

#include <attention/DoNotDisturb.h>
#include <optional>

/// What must not be forgotten of do-not-disturb when the host ends.
struct QuietMemory
{
    std::optional<DoNotDisturb::Choice> choice{}; ///< of a person
    QMap<QString, int> missed{};                  ///< how much was kept from people, by program

    /// Reads the file; empty if there is none, or none that can be read.
    static QuietMemory read(const QString &file);

    /// Writes the file, which only its user may read; removes it if there is nothing to remember. A power cut
    /// leaves the previous file or the new one.
    void write(const QString &file) const;
};
