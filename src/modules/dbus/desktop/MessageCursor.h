// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>

#include <QString>

#include <systemd/sd-bus.h>

/// Goes through a message value by value, taking what is asked for and stepping over the rest.
///
/// Texts are read from where they lie; stepping over the elements of an array of numbers, such as an
/// image's, costs the same for any number of them. Everything throws an sdbus::Error for a message
/// that isn't as expected, and BusErrors::limitExceeded() once more has been read than allowed.
class MessageCursor
{
public:
    MessageCursor(sd_bus_message *message, int mostBytes)
        : m_message(message)
        , m_bytesLeft(std::size_t(mostBytes))
    {
    }

    quint32 readUnsigned();
    qint32 readSigned();
    QString readText();

    // Of the variant that is next: what it holds, if it is of such a type. It is stepped over
    // otherwise.
    std::optional<QString> readTextVariant();
    std::optional<qint64> readNumberVariant(); ///< a whole one of any size, or a truth value

    void enter(char container, const char *contents);
    bool isAtEnd() const;
    void leave();

    /// Steps over the value that is next.
    void skip();

private:
    template <typename Number>
    Number readNumber(char type);
    std::optional<qint64> readWholeNumber(char type);
    void skipArray(const char *contents);
    void spend(std::size_t bytes);

    sd_bus_message *m_message;
    std::size_t m_bytesLeft;
};
