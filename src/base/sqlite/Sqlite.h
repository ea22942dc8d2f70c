// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

/// A connection to a database. Used in one thread at a time. Everything throws SqliteError.
class Sqlite
{
public:
    /// Opens the file, or makes a database in memory if its name is ":memory:".
    explicit Sqlite(const QString &file);

    Sqlite(const Sqlite &) = delete;
    Sqlite &operator=(const Sqlite &) = delete;

    void execute(const QByteArray &sql);

    /// The first column of the first row; 0 if there is none.
    qint64 number(const char *sql);

    /// How many rows the last change has changed.
    qint64 changedRows() const;

    bool isInTransaction() const;

    sqlite3 *handle() const { return m_handle.get(); }

    /// Throws if the code is an error.
    void check(int code) const;

private:
    struct Closer
    {
        void operator()(sqlite3 *handle) const;
    };

    std::unique_ptr<sqlite3, Closer> m_handle;
};

/// A prepared statement. Must not outlive its connection.
class SqliteStatement
{
public:
    SqliteStatement(Sqlite &database, const QByteArray &sql);

    /// Runs the statement with these values for its parameters.
    template <typename... Values>
    void run(const Values &...values);

private:
    friend class SqliteRows;

    struct Finalizer
    {
        void operator()(sqlite3_stmt *statement) const;
    };

    Sqlite *m_database;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
};

/// The rows of a statement, one at a time. One object at a time uses a statement.
class SqliteRows
{
public:
    template <typename... Values>
    explicit SqliteRows(SqliteStatement &statement, const Values &...values)
        : SqliteRows(statement)
    {
        int index = 0;
        (bind(++index, values), ...);
    }
    explicit SqliteRows(SqliteStatement &statement);
    ~SqliteRows();

    SqliteRows(const SqliteRows &) = delete;
    SqliteRows &operator=(const SqliteRows &) = delete;

    /// Goes to the next row; false if there is none.
    bool next();

    qint64 number(int column) const;
    QString string(int column) const;
    QByteArray bytes(int column) const; ///< of a text, in UTF-8

private:
    void bind(int index, qint64 value);
    void bind(int index, int value) { bind(index, qint64(value)); }
    void bind(int index, bool value) { bind(index, qint64(value)); }
    void bind(int index, const QString &value) { bind(index, value.toUtf8()); }
    void bind(int index, const QByteArray &text); ///< in UTF-8

    const Sqlite &m_database;
    sqlite3_stmt *m_statement;
};

template <typename... Values>
void SqliteStatement::run(const Values &...values)
{
    SqliteRows rows(*this, values...);
    while (rows.next()) {
    }
}
