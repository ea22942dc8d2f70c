// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusVariant.h"

#include "bus/BusVariantReader.h"
#include "bus/BusVariantWriter.h"
#include "bus/RawMessage.h"

void BusVariant::append(sdbus::Message &message, const QVariant &value, int depth)
{
    BusVariantWriter(rawMessage(message)).append(value, depth);
}

QVariant BusVariant::read(sdbus::Message &message, int mostBytes)
{
    return BusVariantReader(rawMessage(message), mostBytes).read();
}

QString BusVariant::readText(sdbus::Message &message)
{
    return BusVariantReader(rawMessage(message), anySize).readText();
}

void BusVariant::appendText(sdbus::Message &message, const QString &text)
{
    BusVariantWriter(rawMessage(message)).appendText(text);
}
