// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PlainText.h"

#include <QHash>

#include <algorithm>

namespace {
/// What a tag does to the text: most only go.
enum class Effect { None, Break, Paragraph, Alternative };

const QHash<QString, Effect> &knownTags()
{
    static const QHash<QString, Effect> tags{
        {"b", Effect::None},         {"i", Effect::None},        {"u", Effect::None},
        {"s", Effect::None},         {"a", Effect::None},        {"em", Effect::None},
        {"strong", Effect::None},    {"span", Effect::None},     {"font", Effect::None},
        {"tt", Effect::None},        {"code", Effect::None},     {"small", Effect::None},
        {"big", Effect::None},       {"sub", Effect::None},      {"sup", Effect::None},
        {"html", Effect::None},      {"body", Effect::None},     {"br", Effect::Break},
        {"p", Effect::Paragraph},    {"div", Effect::Paragraph}, {"pre", Effect::Paragraph},
        {"ul", Effect::Paragraph},   {"ol", Effect::Paragraph},  {"li", Effect::Paragraph},
        {"img", Effect::Alternative}};
    return tags;
}

const QHash<QString, QChar> &knownEntities()
{
    static const QHash<QString, QChar> entities{
        {"amp", '&'},      {"lt", '<'},       {"gt", '>'},        {"quot", '"'},
        {"apos", '\''},    {"nbsp", 0x00A0},  {"hellip", 0x2026}, {"ndash", 0x2013},
        {"mdash", 0x2014}, {"lsquo", 0x2018}, {"rsquo", 0x2019},  {"ldquo", 0x201C},
        {"rdquo", 0x201D}, {"bull", 0x2022},  {"euro", 0x20AC},   {"copy", 0x00A9}};
    return entities;
}

bool isControl(uint character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

bool isAsciiLetter(QChar character)
{
    const ushort lower = character.unicode() | 0x20;
    return lower >= 'a' && lower <= 'z';
}

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
            const QChar character = m_markup.at(m_at);
            const bool isRead = (character == '<' && m_tags == Tags::Read && readTag()) ||
                                (character == '&' && readEntity());
            if (!isRead) {
                take(character);
                ++m_at;
            }
        }
        return m_text;
    }

private:
    /// Takes a character of the text; a carriage return, alone or not, ends a line.
    void take(QChar character)
    {
        if (character == '\r') {
            const bool isPair = m_at + 1 < m_markup.size() && m_markup.at(m_at + 1) == '\n';
            if (!isPair) {
                append(QChar('\n'));
            }
        } else if (!isControl(character.unicode()) || character == '\n' || character == '\t') {
            append(character);
        }
    }

    template <typename Text>
    void append(const Text &text)
    {
        if (m_beginsParagraph) {
            m_beginsParagraph = false;
            if (!m_text.isEmpty() && !m_text.endsWith('\n')) {
                m_text.append('\n');
            }
        }
        m_text.append(text);
    }

    /// Reads a known tag; false, with nothing read, for whatever else begins with that character.
    bool readTag()
    {
        int at = m_at + 1;
        const bool isEnd = at < m_markup.size() && m_markup.at(at) == '/';
        at += isEnd ? 1 : 0;
        const int nameAt = at;
        constexpr int longestName = 6;
        while (at < m_markup.size() && at - nameAt <= longestName &&
               isAsciiLetter(m_markup.at(at))) {
            ++at;
        }
        const QString name = m_markup.mid(nameAt, at - nameAt).toString().toLower();
        const auto tag = knownTags().constFind(name);
        if (tag == knownTags().constEnd() || !endsName(at)) {
            return false;
        }
        const int end = tagEnd(at);
        if (end < 0) {
            return false;
        }
        apply(*tag, isEnd, m_markup.mid(at, end - at));
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

    /// Reads an entity; false, with nothing read, for an ampersand that begins none.
    bool readEntity()
    {
        constexpr int longestEntity = 11;
        const QStringRef rest = m_markup.mid(m_at + 1, longestEntity + 1);
        const int size = rest.indexOf(';');
        if (size <= 0) {
            return false;
        }
        const QStringRef name = rest.left(size);
        if (!(name.startsWith('#') ? takeNumbered(name.mid(1)) : takeNamed(name))) {
            return false;
        }
        m_at += size + 2;
        return true;
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

    bool takeNamed(const QStringRef &name)
    {
        const auto entity = knownEntities().constFind(name.toString());
        if (entity == knownEntities().constEnd()) {
            return false;
        }
        append(*entity);
        return true;
    }

    const QStringRef m_markup;
    const Tags m_tags;
    QString m_text;
    int m_at = 0;
    bool m_beginsParagraph = false; ///< what comes next stands on a line of its own
};

bool isPlain(const QString &text)
{
    return std::none_of(text.begin(), text.end(), [](QChar character) {
        return character == '<' || character == '&' ||
               (isControl(character.unicode()) && character != '\n' && character != '\t');
    });
}
} // namespace

QString plainText(const QString &markup)
{
    return isPlain(markup) ? markup : Reader(QStringRef(&markup), Reader::Tags::Read).read();
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
