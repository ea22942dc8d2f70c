// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <exception>

/// What is wrong with a database.
class SqliteError : public std::exception
{
public:
    enum class Kind {
        Failed,  ///< may work later
        Damaged, ///< the file is not what has been written
        Unusable ///< the file belongs to others and stays as it is
    };

    SqliteError(Kind kind, QString reason)
        : m_kind(kind)
        , m_reason(std::move(reason))
    {
    }

    Kind kind() const { return m_kind; }

    /// For people. Does not name the file.
    const QString &reason() const { return m_reason; }

    const char *what() const noexcept override { return "SqliteError"; }

private:
    Kind m_kind;
    QString m_reason;
};
