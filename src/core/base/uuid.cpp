// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/uuid.h"

#include <QRandomGenerator>
#include <QUuid>

#include <array>

QString tavoGenerateUuid()
{
    // QUuid::createUuid() asks the processor for random numbers, which takes half a microsecond: a
    // quarter of the shortest time of a display-open (benchmark displayOpen).
    std::array<quint32, 4> random{};
    QRandomGenerator::global()->fillRange(random.data(), int(random.size()));
    auto *bytes = reinterpret_cast<char *>(random.data());
    bytes[6] = char((bytes[6] & 0x0f) | 0x40); // version 4: random
    bytes[8] = char((bytes[8] & 0x3f) | 0x80); // the variant of RFC 4122
    return QUuid::fromRfc4122(QByteArray::fromRawData(bytes, sizeof random))
        .toString(QUuid::WithoutBraces);
}
