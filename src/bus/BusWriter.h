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

/// Writes a message, one value after another, and counts the bytes.
///
/// Throws BusError::unsupportedValue() for what a message can't hold, and when more bytes have been
/// written than allowed. The message must not be sent then.
class BusWriter
{
public:
    /// How deep values nest in a message: a list counts as two levels, a record as three.
    static constexpr int maxDepth = 64;

    /// Counted for each value in a variant, in addition to the bytes of its strings: about what a value
    /// takes in memory.
    static constexpr int bytesPerValue = 32;

    /// The system bus disconnects a sender of more than 32 MiB in one message. The rest is for the
    /// message's header.
    static constexpr int maxMessageBytes = (1 << 25) - (1 << 16);

    explicit BusWriter(BusMessage message, int maxBytes = std::numeric_limits<int>::max())
        : m_message(std::move(message))
        , m_maxBytes(std::size_t(maxBytes))
        , m_bytesLeft(m_maxBytes)
    {
    }

    /// From now on, strings in variants are cut after so many characters.
    void setMaxLength(int length) { m_maxLength = length; }

    void writeBoolean(bool value);
    void writeInt32(std::int32_t value);
    void writeUInt32(std::uint32_t value);
    /// A null character, half a surrogate pair and a noncharacter are unsupported.
    void writeString(const QString &text);
    void writeStringList(const QStringList &texts);

    /// A value of the model as a variant: BusReader::readVariant() gives an equal value. Types that are
    /// not plain data, and values that nest too deeply, are unsupported.
    void writeVariant(const QVariant &value);

    void openArray(const char *element) { open(SD_BUS_TYPE_ARRAY, element); }
    void openStruct(const char *members) { open(SD_BUS_TYPE_STRUCT, members); }
    void openDictEntry(const char *members) { open(SD_BUS_TYPE_DICT_ENTRY, members); }

    /// Closes the container that was opened last.
    void close();

    /// About how many bytes have been written; an estimate that is too high rather than too low.
    std::size_t bytesWritten() const { return m_maxBytes - m_bytesLeft; }

    const BusMessage &message() const { return m_message; }

private:
    QString cutText(const QString &text) const;
    void writeOwnType(const QVariant &value);
    void writeBytes(const QByteArray &bytes);
    void writeList(const QVariantList &values);
    template <typename Fields>
    void writeRecord(const Fields &fields); ///< of a hash or a map
    template <typename Wire>
    void writeNumber(char type, Wire number);
    template <typename Wire>
    void writeNumberVariant(char type, Wire number);

    void open(char container, const char *contents);
    void count(std::size_t bytes);

    BusMessage m_message;
    std::size_t m_maxBytes;
    std::size_t m_bytesLeft;
    int m_maxLength = std::numeric_limits<int>::max();
    int m_depth = 0; ///< containers that are open
};
