// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

#include <cstddef>

#include <systemd/sd-bus.h>

/// Writes values into a message; see BusVariant.
class BusVariantWriter
{
public:
    /// At most about so many bytes; more are refused as an unsupported value.
    BusVariantWriter(sd_bus_message *message, int mostBytes)
        : m_message(message)
        , m_mostBytes(std::size_t(mostBytes))
        , m_bytesLeft(m_mostBytes)
    {
    }

    /// As a variant that stands in that many containers.
    void append(const QVariant &value, int depth);

    void appendText(const QString &text);

    /// About how many so far: rather too many than too few.
    std::size_t bytesWritten() const { return m_mostBytes - m_bytesLeft; }

private:
    void appendOwnType(const QVariant &value, int depth);
    void appendNothing();
    void appendBytes(const QByteArray &bytes);
    void appendTextVariant(const QString &text);
    void appendTexts(const QStringList &texts);
    void appendList(const QVariantList &values, int depth);

    /// Of a hash or a map.
    template <typename Fields>
    void appendFields(const Fields &fields, int depth);

    template <typename Wire>
    void appendNumber(char type, Wire number);

    void open(char container, const char *contents);
    void close();
    void spend(std::size_t bytes);

    sd_bus_message *m_message;
    const std::size_t m_mostBytes;
    std::size_t m_bytesLeft;
};
