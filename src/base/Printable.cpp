// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"

#include "base/SoundLocation.h"

#include <algorithm>

bool isPrintable(const QString &text)
{
    return std::none_of(text.begin(), text.end(),
                        [](QChar character) { return isUnsafeToPrint(character.unicode()); });
}

QString printable(const QString &text)
{
    if (isPrintable(text)) {
        return text;
    }
    QString result;
    result.reserve(text.size() + 16);
    for (const QChar character : text) {
        if (character == QLatin1Char('\n')) {
            result += QLatin1String("\\n");
        } else if (character == QLatin1Char('\r')) {
            result += QLatin1String("\\r");
        } else if (character == QLatin1Char('\t')) {
            result += QLatin1String("\\t");
        } else if (isUnsafeToPrint(character.unicode())) {
            result += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        } else {
            result += character;
        }
    }
    return result;
}

QString shortened(const QString &text, int maxSize)
{
    if (text.size() <= maxSize) {
        return text;
    }
    // Most of the room is for the beginning. Neither cut divides a surrogate pair.
    int head = maxSize * 3 / 4;
    int tail = text.size() - (maxSize - head);
    head -= int(text.at(head).isLowSurrogate());
    tail += int(text.at(tail).isLowSurrogate());
    return QStringLiteral("%1...(%2 left out)...%3")
        .arg(text.left(head), QString::number(tail - head), text.mid(tail));
}

std::string logText(const QString &value)
{
    constexpr int maxSize = 200; // long enough for ordinary ids and paths
    return printable(shortened(withoutUserInfo(value), maxSize)).toStdString();
}
