// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelTest.h"

#include <sstream>

std::string ModelClient::lineOf(sdbus::Message &message)
{
    std::ostringstream line;
    const std::string name = message.getMemberName();
    line << name << ' ' << BusVariant::readText(message);
    if (name == "ValueChanged" || name == "Received") {
        line << ' ' << BusVariant::read(message);
    } else if (name == "NodeChanged") {
        bool published = false;
        message >> published;
        line << (published ? " published" : " gone");
    } else if (name == "RowsChanged") {
        std::vector<std::string> changes;
        std::int32_t first = 0;
        std::int32_t count = 0;
        message >> changes >> first >> count;
        for (const std::string &change : changes) {
            line << ' ' << change;
        }
        line << ' ' << first << '+' << count;
    }
    return line.str();
}
