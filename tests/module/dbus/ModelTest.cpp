// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelTest.h"

#include <sstream>

std::string ModelClient::lineOf(const BusMessage &signal)
{
    EXPECT_TRUE(BusInterface::model().describes(signal)) << signal.member();
    std::ostringstream line;
    const std::string name = signal.member();
    BusReader reader(signal);
    line << name << ' ' << reader.readString();
    if (name == "ValueChanged" || name == "Received") {
        line << ' ' << reader.readVariant();
    } else if (name == "Dropped") {
        line << ' ' << reader.readUInt32();
    } else if (name == "NodeChanged") {
        line << (reader.readBoolean() ? " published" : " gone");
    } else if (name == "RowsChanged") {
        for (const QString &change : reader.readStringList()) {
            line << ' ' << change.toStdString();
        }
        const std::int32_t first = reader.readInt32();
        line << ' ' << first << '+' << reader.readInt32();
    }
    return line.str();
}
