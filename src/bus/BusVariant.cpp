// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusVariant.h"

#include "bus/BusVariantReader.h"
#include "bus/BusVariantWriter.h"
#include "bus/RawMessage.h"

#include <QVector>

void BusVariant::append(sdbus::Message &message, const QVariant &value, int depth, int mostBytes)
{
    BusVariantWriter(rawMessage(message), mostBytes).append(value, depth);
}

QVariant BusVariant::read(sdbus::Message &message, int mostBytes)
{
    return BusVariantReader(rawMessage(message), mostBytes).read();
}

QString BusVariant::readText(sdbus::Message &message)
{
    return BusVariantReader(rawMessage(message), anySize).readText();
}

void BusVariant::appendShownText(sdbus::Message &message, const QString &text)
{
    appendText(message, shownText(text));
}

QString BusVariant::shownText(const QString &text)
{
    QVector<uint> codes = text.toUcs4();
    for (uint &code : codes) {
        if (code == 0 || QChar::isSurrogate(code) || QChar::isNonCharacter(code)) {
            code = QChar::ReplacementCharacter;
        }
    }
    return QString::fromUcs4(codes.constData(), codes.size());
}

void BusVariant::appendText(sdbus::Message &message, const QString &text)
{
    BusVariantWriter(rawMessage(message), anySize).appendText(text);
}
