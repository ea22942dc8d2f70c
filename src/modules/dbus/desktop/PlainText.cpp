// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PlainText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace {
/// What a tag does to the text: most only go.
enum class Effect { None, Break, Paragraph, Alternative };

/// A name as one number, which is compared at once, in the order of the letters.
using NameNumber = std::uint64_t;
constexpr int longestName = sizeof(NameNumber); ///< longer than any that is known

constexpr NameNumber withLetter(NameNumber name, int index, uint letter)
{
    return name | (NameNumber(letter) << (8 * (longestName - 1 - index)));
}

constexpr NameNumber numberOf(std::string_view name)
{
    NameNumber number = 0;
    int index = 0;
    for (const char letter : name) {
        number = withLetter(number, index++, uint(letter));
    }
    return number;
}

template <typename Value>
struct Named
{
    constexpr Named(std::string_view text, Value meaning)
        : name(numberOf(text))
        , value(meaning)
    {
    }

    NameNumber name;
    Value value;
};

// In the order of their names.
constexpr std::array<Named<Effect>, 25> tags{{
    {"a", Effect::None},        {"b", Effect::None},       {"big", Effect::None},
    {"body", Effect::None},     {"br", Effect::Break},     {"code", Effect::None},
    {"div", Effect::Paragraph}, {"em", Effect::None},      {"font", Effect::None},
    {"html", Effect::None},     {"i", Effect::None},       {"img", Effect::Alternative},
    {"li", Effect::Paragraph},  {"ol", Effect::Paragraph}, {"p", Effect::Paragraph},
    {"pre", Effect::Paragraph}, {"s", Effect::None},       {"small", Effect::None},
    {"span", Effect::None},     {"strong", Effect::None},  {"sub", Effect::None},
    {"sup", Effect::None},      {"tt", Effect::None},      {"u", Effect::None},
    {"ul", Effect::Paragraph},
}};

constexpr std::array<Named<char16_t>, 16> entities{{
    {"amp", u'&'},
    {"apos", u'\''},
    {"bull", 0x2022},
    {"copy", 0x00A9},
    {"euro", 0x20AC},
    {"gt", u'>'},
    {"hellip", 0x2026},
    {"ldquo", 0x201C},
    {"lsquo", 0x2018},
    {"lt", u'<'},
    {"mdash", 0x2014},
    {"nbsp", 0x00A0},
    {"ndash", 0x2013},
    {"quot", u'"'},
    {"rdquo", 0x201D},
    {"rsquo", 0x2019},
}};

/// A name as it stands in a text, made fit to be looked up without taking memory for it.
class Name
{
public:
    /// Takes the character if a name may have it, and there may be more of them.
    bool take(QChar character) { return takeLetter(character.unicode()); }

    /// The same for a name in which capitals are no others than small letters.
    bool takeLowered(QChar character)
    {
        constexpr uint smallBit = 0x20;
        return takeLetter(character.unicode() | smallBit);
    }

    template <typename Value, std::size_t size>
    std::optional<Value> findIn(const std::array<Named<Value>, size> &table) const
    {
        const auto entry = std::lower_bound(
            table.begin(), table.end(), m_name,
            [](const Named<Value> &one, NameNumber other) { return one.name < other; });
        if (entry == table.end() || entry->name != m_name) {
            return std::nullopt;
        }
        return entry->value;
    }

private:
    bool takeLetter(uint code)
    {
        const bool isLetter = (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z');
        if (!isLetter || m_size == longestName) {
            return false;
        }
        m_name = withLetter(m_name, m_size++, code);
        return true;
    }

    NameNumber m_name = 0;
    int m_size = 0;
};

constexpr bool isControl(uint character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

constexpr uint endOfTable = 0xA0; ///< from here on, all are plain

/// Whether each character before that is plain: bodies are long, and each is looked at.
constexpr std::array<bool, endOfTable> makePlain()
{
    std::array<bool, endOfTable> plain{};
    for (uint code = 0; code < endOfTable; ++code) {
        plain[code] =
            code == '\n' || code == '\t' || (code != '<' && code != '&' && !isControl(code));
    }
    return plain;
}

/// Whether a character is a text's own, whatever stands around it.
struct IsPlain
{
    bool operator()(QChar character) const
    {
        static constexpr std::array<bool, endOfTable> plain = makePlain();
        const uint code = character.unicode();
        return code >= endOfTable || plain[code];
    }
};

/// Whether a number is that of a character that a text may hold.
bool isCharacter(uint number)
{
    const bool isSpace = number == '\t' || number == '\n' || number == '\r';
    return (isSpace || !isControl(number)) && number <= 0x10FFFF && !QChar::isSurrogate(number) &&
           !QChar::isNonCharacter(number);
}

/// Goes through the markup once, from its start to its end.
class Reader
{
public:
    enum class Tags { Read, AreText };

    Reader(const QStringRef &markup, Tags tags)
        : m_markup(markup)
        , m_tags(tags)
    {
    }

    QString read()
    {
        m_text.reserve(m_markup.size());
        while (m_at < m_markup.size()) {
            takeRun();
            if (m_at < m_markup.size() && !readTag() && !readEntity()) {
                takeOne();
            }
        }
        return m_text;
    }

private:
    /// Takes all up to what may be more than text.
    void takeRun()
    {
        const auto end = std::find_if_not(m_markup.begin() + m_at, m_markup.end(), IsPlain());
        const int size = int(end - m_markup.begin()) - m_at;
        if (size > 0) {
            beginText();
            m_text.append(m_markup.begin() + m_at, size);
            m_at += size;
        }
    }

    /// Takes a character that is only text after all. A carriage return, alone or not, ends a line;
    /// other controls go.
    void takeOne()
    {
        const QChar character = m_markup.at(m_at++);
        if (!isControl(character.unicode())) {
            append(character);
        } else if (character == '\r' && (m_at == m_markup.size() || m_markup.at(m_at) != '\n')) {
            append(QChar('\n'));
        }
    }

    template <typename Text>
    void append(const Text &text)
    {
        beginText();
        m_text.append(text);
    }

    /// Starts the line that a paragraph has asked for.
    void beginText()
    {
        if (m_beginsParagraph) {
            m_beginsParagraph = false;
            if (!m_text.isEmpty() && !m_text.endsWith('\n')) {
                m_text.append('\n');
            }
        }
    }

    /// Reads a known tag; false, with nothing read, for whatever else stands there.
    bool readTag()
    {
        if (m_tags == Tags::AreText || m_markup.at(m_at) != '<') {
            return false;
        }
        int at = m_at + 1;
        const bool isEnd = at < m_markup.size() && m_markup.at(at) == '/';
        at += isEnd ? 1 : 0;
        Name name;
        while (at < m_markup.size() && name.takeLowered(m_markup.at(at))) {
            ++at;
        }
        if (!endsName(at)) {
            return false;
        }
        const std::optional<Effect> effect = name.findIn(tags);
        const int end = effect ? tagEnd(at) : -1;
        if (end < 0) {
            return false;
        }
        if (*effect != Effect::None) {
            apply(*effect, isEnd, m_markup.mid(at, end - at));
        }
        m_at = end + 1;
        return true;
    }

    bool endsName(int at) const
    {
        return at < m_markup.size() &&
               (m_markup.at(at).isSpace() || m_markup.at(at) == '>' || m_markup.at(at) == '/');
    }

    /// Where the tag's '>' is; -1 when another tag or the markup's end comes first.
    ///
    /// Linear over all tags: one that finds itself outside of quotation marks at a '<' gives up, and
    /// of two that look at the same character, one sees it in quotation marks and one doesn't, or
    /// each in marks of another kind. So no character is looked at more than three times.
    int tagEnd(int at) const
    {
        QChar quote;
        for (; at < m_markup.size(); ++at) {
            const QChar character = m_markup.at(at);
            if (!quote.isNull()) {
                quote = character == quote ? QChar() : quote;
            } else if (character == '"' || character == '\'') {
                quote = character;
            } else if (character == '>') {
                return at;
            } else if (character == '<') {
                return -1;
            }
        }
        return -1;
    }

    void apply(Effect effect, bool isEnd, const QStringRef &attributes)
    {
        if (effect == Effect::Break) {
            append(QChar('\n'));
        } else if (effect == Effect::Paragraph) {
            m_beginsParagraph = true;
        } else if (effect == Effect::Alternative && !isEnd) {
            append(alternativeIn(attributes));
        }
    }

    /// The value of the attribute alt, in either kind of quotation marks.
    static QString alternativeIn(const QStringRef &attributes)
    {
        constexpr int keySize = 4;
        int at = 0;
        while ((at = attributes.indexOf(QLatin1String("alt="), at, Qt::CaseInsensitive)) >= 0) {
            const int valueAt = at + keySize;
            const bool isKey = at > 0 && attributes.at(at - 1).isSpace();
            const QChar quote = valueAt < attributes.size() ? attributes.at(valueAt) : QChar();
            if (isKey && (quote == '"' || quote == '\'')) {
                const int end = attributes.indexOf(quote, valueAt + 1);
                const int size = end < 0 ? -1 : end - valueAt - 1;
                return Reader(attributes.mid(valueAt + 1, size), Tags::AreText).read();
            }
            at = valueAt;
        }
        return {};
    }

    /// Reads an entity; false, with nothing read, for whatever else stands there.
    bool readEntity()
    {
        constexpr int longestEntity = 11;
        if (m_markup.at(m_at) != '&') {
            return false;
        }
        const int first = m_at + 1;
        const int last = qMin(first + longestEntity, m_markup.size() - 1);
        int end = first;
        while (end <= last && m_markup.at(end) != ';') {
            ++end;
        }
        if (end > last || end == first) {
            return false;
        }
        const bool isTaken = m_markup.at(first) == '#'
                                 ? takeNumbered(m_markup.mid(first + 1, end - first - 1))
                                 : takeNamed(first, end);
        m_at = isTaken ? end + 1 : m_at;
        return isTaken;
    }

    bool takeNumbered(const QStringRef &digits)
    {
        const bool isHexadecimal = digits.startsWith('x') || digits.startsWith('X');
        bool isNumber = false;
        const QStringRef bare = digits.mid(isHexadecimal ? 1 : 0);
        const uint number = bare.toUInt(&isNumber, isHexadecimal ? 16 : 10);
        // The conversion itself would take signs and blanks.
        if (!isNumber || !bare.at(0).isLetterOrNumber()) {
            return false;
        }
        if (number == '\r') {
            append(QChar('\n'));
        } else if (isCharacter(number)) {
            append(QString::fromUcs4(&number, 1));
        } else {
            append(QChar(QChar::ReplacementCharacter));
        }
        return true;
    }

    bool takeNamed(int first, int end)
    {
        Name name;
        for (int at = first; at < end; ++at) {
            if (!name.take(m_markup.at(at))) {
                return false;
            }
        }
        const std::optional<char16_t> entity = name.findIn(entities);
        if (entity) {
            append(QChar(*entity));
        }
        return entity.has_value();
    }

    const QStringRef m_markup;
    const Tags m_tags;
    QString m_text;
    int m_at = 0;
    bool m_beginsParagraph = false; ///< what comes next stands on a line of its own
};

} // namespace

QString plainText(const QString &markup)
{
    const bool isText = std::all_of(markup.begin(), markup.end(), IsPlain());
    return isText ? markup : Reader(QStringRef(&markup), Reader::Tags::Read).read();
}

QString plainLine(const QString &text)
{
    const auto isKept = [](QChar character) { return !isControl(character.unicode()); };
    if (std::all_of(text.begin(), text.end(), isKept)) {
        return text;
    }
    QString line;
    line.reserve(text.size());
    for (const QChar character : text) {
        if (isKept(character)) {
            line.append(character);
        } else if (character == '\n' || character == '\t') {
            line.append(' ');
        }
    }
    return line;
}
