// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusMessage.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

/// Reads a message, one value after another. Readers of one message share its position.
///
/// Throws BusError::invalidArguments() when the message holds another type than the one read, and
/// BusError::limitExceeded() when more bytes have been read than allowed. It counts the bytes of
/// strings, and BusWriter::bytesPerValue for each value in a variant and each value that is skipped.
class BusReader
{
public:
    /// Of one record. Whoever sends it may have chosen keys with equal hashes, which takes quadratic time.
    static constexpr int maxFields = 256;

    explicit BusReader(BusMessage message, int maxBytes = std::numeric_limits<int>::max())
        : m_message(std::move(message))
        , m_maxBytes(std::size_t(maxBytes))
        , m_bytesLeft(m_maxBytes)
    {
    }

    bool readBoolean();
    std::int32_t readInt32();
    std::uint32_t readUInt32();
    QString readString() { return readStringOf(SD_BUS_TYPE_STRING); }
    QStringList readStringList();

    /// A variant as a value of the model. Containers that the model does not have become the nearest
    /// that it has: an array or a struct becomes a list, a dictionary with string keys a record. File
    /// descriptors, other dictionaries and records with more than maxFields fields are invalid arguments.
    QVariant readVariant();

    /// Returns the value of the next variant, or nothing if it has another type. Reads past the
    /// variant in either case.
    std::optional<QString> readStringVariant();
    std::optional<std::int64_t> readIntegerVariant(); ///< an integer of any type, or a boolean

    /// Enters the struct in the next variant, if it has these members; leave() twice afterwards. Otherwise
    /// reads past the variant and returns false.
    bool enterStructVariant(const char *members);

    /// The next value, an array of bytes, without a copy: valid as long as the message. Its size is not
    /// limited.
    QByteArray viewBytes();

    void enterArray(const char *element) { enter(SD_BUS_TYPE_ARRAY, element); }
    void enterStruct(const char *members) { enter(SD_BUS_TYPE_STRUCT, members); }
    void enterDictEntry(const char *members) { enter(SD_BUS_TYPE_DICT_ENTRY, members); }

    /// Whether the container that was entered last has no further value.
    bool isAtEnd() const;

    /// Continues after the container that was entered last.
    void leave();

    /// Reads past the next value. An array of numbers, such as an image, costs the same at any size.
    void skip();

    /// Reads past all arguments, from the first one.
    void skipAll();

    /// Continues at the start of the message.
    void restart();

    std::size_t bytesRead() const { return m_maxBytes - m_bytesLeft; }

    /// Bytes of strings and arrays that were skipped or viewed. They are not limited.
    std::size_t bytesSkipped() const { return m_bytesSkipped; }

private:
    struct Type
    {
        char type;
        const char *contents;
    };

    Type peek() const;
    template <typename Number>
    Number readNumber(char type);
    std::int64_t readInteger(char type);
    QString readStringOf(char type);
    QStringList readStringListOf(char type);
    QVariant readVariant(const Type &next);
    QVariant readValue();
    QVariant readBasic(char type);
    QVariant readArray(const char *element);
    QVariant readBytes();
    QVariant readList(char container, const char *contents);
    QVariant readRecord(const char *entry);
    QVariant readSignature();
    void skipString(char type);
    void skipArray(const char *contents);

    void enter(char container, const char *contents);
    void count(std::size_t bytes);

    BusMessage m_message;
    std::size_t m_maxBytes;
    std::size_t m_bytesLeft;
    std::size_t m_bytesSkipped = 0;
};
