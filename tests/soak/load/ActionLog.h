// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <mutex>

/// The last actions of the load, to explain a finding. Limited in size. Called from any thread.
class ActionLog
{
public:
    void note(const QString &action);

    /// Oldest first.
    QStringList last() const;

private:
    static constexpr std::size_t length = 120;
    static constexpr std::size_t width = 160;

    mutable std::mutex m_mutex;
    std::array<std::array<char, width>, length> m_lines{};
    std::size_t m_count = 0;
};
