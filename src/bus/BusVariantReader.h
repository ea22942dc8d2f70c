// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

#include <systemd/sd-bus.h>

/// Reads one value out of a message; see BusVariant.
class BusVariantReader
{
public:
    BusVariantReader(sd_bus_message *message, int mostBytes)
        : m_message(message)
        , m_mostBytes(std::size_t(mostBytes))
        , m_bytesLeft(m_mostBytes)
    {
    }

    /// The variant that is next.
    QVariant read();

    QString readText(char type = SD_BUS_TYPE_STRING);

    /// About how many so far.
    std::size_t bytesRead() const { return m_mostBytes - m_bytesLeft; }

private:
    QVariant readNext();
    QVariant readBasic(char type);
    QVariant readArray(const char *element);
    QVariant readBytes();
    QVariant readTexts(char type);
    QVariant readList(char container, const char *contents);
    QVariant readHash(const char *entry);
    QVariant readSignature();

    template <typename Wire, typename Value = Wire>
    QVariant readAs(char type);

    void enter(char container, const char *contents);
    void leave();
    bool isAtEnd() const;
    void spend(std::size_t bytes);

    sd_bus_message *m_message;
    const std::size_t m_mostBytes;
    std::size_t m_bytesLeft;
};
