// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MarkupEntity.h"

#include "base/Printable.h"
#include "MarkupName.h"

namespace {
constexpr int maxEntitySize = 13;

constexpr std::array<MarkupName::Known<uint>, 16> entities{{
    {"amp", '&'},
    {"lt", '<'},
    {"gt", '>'},
    {"quot", '"'},
    {"apos", '\''},
    {"nbsp", 0x00A0},
    {"bull", 0x2022},
    {"copy", 0x00A9},
    {"euro", 0x20AC},
    {"hellip", 0x2026},
    {"ldquo", 0x201C},
    {"lsquo", 0x2018},
    {"mdash", 0x2014},
    {"ndash", 0x2013},
    {"rdquo", 0x201D},
    {"rsquo", 0x2019},
}};

/// Whether a text may hold the character.
bool isCharacter(uint number)
{
    const bool isSpace = number == '\t' || number == '\n' || number == '\r';
    return (isSpace || !isUnsafeToPrint(number)) && number <= QChar::LastValidCodePoint &&
           !QChar::isSurrogate(number) && !QChar::isNonCharacter(number);
}

std::optional<uint> characterByNumber(const QStringRef &text)
{
    const bool isHexadecimal = text.startsWith('x') || text.startsWith('X');
    const QStringRef digits = text.mid(isHexadecimal ? 1 : 0);
    bool isNumber = false;
    const uint number = digits.toUInt(&isNumber, isHexadecimal ? 16 : 10);
    // toUInt() accepts signs and spaces, too.
    if (!isNumber || !digits.at(0).isLetterOrNumber()) {
        return std::nullopt;
    }
    if (number == '\r') {
        return '\n';
    }
    return isCharacter(number) ? number : uint(QChar::ReplacementCharacter);
}

std::optional<uint> characterByName(const QStringRef &text)
{
    MarkupName name;
    for (const QChar character : text) {
        if (!name.add(character)) {
            return std::nullopt;
        }
    }
    return name.findIn(entities);
}
} // namespace

std::optional<MarkupEntity> MarkupEntity::read(const QStringRef &markup)
{
    if (!markup.startsWith('&')) {
        return std::nullopt;
    }
    const int end = markup.left(maxEntitySize).indexOf(';');
    if (end <= 1) {
        return std::nullopt;
    }
    const std::optional<uint> character = markup.at(1) == '#'
                                              ? characterByNumber(markup.mid(2, end - 2))
                                              : characterByName(markup.mid(1, end - 1));
    return character ? std::make_optional(MarkupEntity{*character, end + 1}) : std::nullopt;
}
