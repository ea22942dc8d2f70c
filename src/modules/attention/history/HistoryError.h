// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <exception>

/// Thrown by what the history's file is made of, and caught in HistoryWriter.
class HistoryError : public std::exception
{
public:
    enum class Kind {
        Failed,  ///< may work later
        Damaged, ///< the file is not what has been written
        Unusable ///< the file belongs to others and stays as it is
    };

    HistoryError(Kind kind, QString reason)
        : m_kind(kind)
        , m_reason(std::move(reason))
    {
    }

    Kind kind() const { return m_kind; }

    /// For people. Does not name the file.
    const QString &reason() const { return m_reason; }

    const char *what() const noexcept override { return "HistoryError"; }

private:
    Kind m_kind;
    QString m_reason;
};
