// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PlainText.h"

#include "base/Printable.h"
#include "MarkupEntity.h"
#include "MarkupName.h"

#include <QVector>

#include <algorithm>
#include <array>
#include <optional>

namespace {
/// What a tag does to the text around it. All tags are removed.
enum class Effect { None, Break, Paragraph, Alternative, Bold, Italic, Underlined };

constexpr std::array<MarkupName::Known<Effect>, 25> tags{{
    {"b", Effect::Bold},        {"i", Effect::Italic},        {"u", Effect::Underlined},
    {"a", Effect::None},        {"br", Effect::Break},        {"p", Effect::Paragraph},
    {"big", Effect::None},      {"body", Effect::None},       {"code", Effect::None},
    {"div", Effect::Paragraph}, {"em", Effect::Italic},       {"font", Effect::None},
    {"html", Effect::None},     {"img", Effect::Alternative}, {"li", Effect::Paragraph},
    {"ol", Effect::Paragraph},  {"pre", Effect::Paragraph},   {"s", Effect::None},
    {"small", Effect::None},    {"span", Effect::None},       {"strong", Effect::Bold},
    {"sub", Effect::None},      {"sup", Effect::None},        {"tt", Effect::None},
    {"ul", Effect::Paragraph},
}};

constexpr uint endOfTable = 0xA0; ///< few of the characters from here on are not plain

/// Whether each character is plain. A table, because a body may have a million characters.
constexpr std::array<bool, endOfTable> makePlain()
{
    std::array<bool, endOfTable> plain{};
    for (uint code = 0; code < endOfTable; ++code) {
        plain[code] =
            code == '\n' || code == '\t' || (code != '<' && code != '&' && !isUnsafeToPrint(code));
    }
    return plain;
}

bool isSeparator(QChar character)
{
    return character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
}

/// Whether a character is text in any context.
struct IsPlain
{
    bool operator()(QChar character) const
    {
        static constexpr std::array<bool, endOfTable> plain = makePlain();
        const uint code = character.unicode();
        return code < endOfTable ? plain[code] : !isUnsafeToPrint(code);
    }
};

/// The beginning of a text. Never ends with half a surrogate pair, which could not be sent.
QString beginning(const QString &text, int maxLength)
{
    if (text.size() <= maxLength) {
        return text;
    }
    return text.left(text.at(maxLength - 1).isHighSurrogate() ? maxLength - 1 : maxLength);
}

/// Where the emphasis of a text changes.
class Emphasis
{
public:
    void begin(Effect effect) { ++depthOf(effect); }
    void end(Effect effect) { depthOf(effect) = std::max(depthOf(effect) - 1, 0); }

    /// The text continues at this position.
    void mark(int at)
    {
        const Style style = present();
        const Style last = m_changes.isEmpty() ? Style() : m_changes.constLast().style;
        if (style != last && m_changes.size() < maxEmphasisChanges) {
            m_changes.append({at, style});
        }
    }

    /// The text with its emphasis; empty if there is none.
    QString markupOf(const QString &text) const
    {
        QString markup;
        if (m_changes.isEmpty()) {
            return markup;
        }
        appendTo(markup, text.left(m_changes.constFirst().at), {});
        for (int i = 0; i < m_changes.size(); ++i) {
            const int at = m_changes[i].at;
            const int end = i + 1 < m_changes.size() ? m_changes[i + 1].at : text.size();
            // What follows the last change that is kept has no emphasis.
            const bool isKept = i + 1 < maxEmphasisChanges;
            appendTo(markup, text.mid(at, end - at), isKept ? m_changes[i].style : Style());
        }
        return markup;
    }

private:
    static constexpr std::array<const char *, 3> s_names{"b", "i", "u"};
    using Style = std::array<bool, s_names.size()>;

    struct Change
    {
        int at;
        Style style;
    };

    int &depthOf(Effect effect)
    {
        return m_depths[std::size_t(effect) - std::size_t(Effect::Bold)];
    }

    Style present() const
    {
        Style style{};
        std::transform(m_depths.begin(), m_depths.end(), style.begin(),
                       [](int depth) { return depth > 0; });
        return style;
    }

    static void appendTo(QString &markup, const QString &text, const Style &style)
    {
        for (std::size_t i = 0; i < style.size(); ++i) {
            markup += style[i] ? QStringLiteral("<%1>").arg(QLatin1String(s_names[i])) : QString();
        }
        for (const QChar character : text) {
            switch (character.unicode()) {
            case '&':
                markup += QLatin1String("&amp;");
                break;
            case '<':
                markup += QLatin1String("&lt;");
                break;
            case '>':
                markup += QLatin1String("&gt;");
                break;
            default:
                markup += character;
            }
        }
        for (std::size_t i = style.size(); i-- > 0;) {
            markup += style[i] ? QStringLiteral("</%1>").arg(QLatin1String(s_names[i])) : QString();
        }
    }

    std::array<int, s_names.size()> m_depths{};
    QVector<Change> m_changes;
};

/// Reads markup from its start to its end.
class Reader
{
public:
    enum class Tags { Remove, Keep };

    Reader(const QStringRef &markup, Tags tags)
        : m_markup(markup)
        , m_tags(tags)
    {
    }

    BodyText read()
    {
        m_text.reserve(m_markup.size());
        while (m_at < m_markup.size()) {
            takeRun();
            if (m_at < m_markup.size() && !readTag() && !readEntity()) {
                takeOne();
            }
        }
        BodyText body{m_text, m_emphasis.markupOf(m_text)};
        // Both are stored, and tags may have taken most of the room.
        m_text.clear();
        body.text.squeeze();
        body.markup.squeeze();
        return body;
    }

private:
    /// Takes all plain characters up to the next one that is not plain.
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

    /// Takes a character that turned out to be text. A carriage return, with or without a line feed,
    /// and a separator end a line; other characters that are unsafe to print are dropped.
    void takeOne()
    {
        const QChar character = m_markup.at(m_at++);
        if (!isUnsafeToPrint(character.unicode())) {
            append(character);
        } else if (isSeparator(character) ||
                   (character == '\r' && (m_at == m_markup.size() || m_markup.at(m_at) != '\n'))) {
            append(QChar('\n'));
        }
    }

    template <typename Text>
    void append(const Text &text)
    {
        beginText();
        m_text.append(text);
    }

    /// Starts a new line if a paragraph requires it.
    void beginText()
    {
        if (m_beginsParagraph) {
            m_beginsParagraph = false;
            if (!m_text.isEmpty() && !m_text.endsWith('\n')) {
                m_text.append('\n');
            }
        }
        m_emphasis.mark(m_text.size());
    }

    /// Reads a known tag. Returns false and reads nothing if there is none.
    bool readTag()
    {
        if (m_tags == Tags::Keep || m_markup.at(m_at) != '<') {
            return false;
        }
        int at = m_at + 1;
        const bool isEnd = at < m_markup.size() && m_markup.at(at) == '/';
        at += isEnd ? 1 : 0;
        MarkupName name;
        while (at < m_markup.size() && name.addLowered(m_markup.at(at))) {
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

    /// The position of the tag's '>', or -1 when another tag or the end of the markup comes first.
    ///
    /// All searches together take linear time. A search ends at a '<' outside of quotes, so two searches
    /// can reach the same character only in different states: outside of quotes, in single or in double
    /// ones. No character is read more than three times.
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
            const QString alternative = alternativeIn(attributes);
            if (!alternative.isEmpty()) {
                append(alternative);
            }
        } else if (effect >= Effect::Bold && isEnd) {
            m_emphasis.end(effect);
        } else if (effect >= Effect::Bold && !attributes.endsWith('/')) {
            m_emphasis.begin(effect);
        }
    }

    /// The value of the attribute alt, in single or double quotes.
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
                return Reader(attributes.mid(valueAt + 1, size), Tags::Keep).read().text;
            }
            at = valueAt;
        }
        return {};
    }

    /// Reads an entity. Returns false and reads nothing if there is none.
    bool readEntity()
    {
        const std::optional<MarkupEntity> entity = MarkupEntity::read(m_markup.mid(m_at));
        if (!entity) {
            return false;
        }
        const uint character = entity->character;
        if (QChar::requiresSurrogates(character)) {
            append(QString::fromUcs4(&character, 1));
        } else {
            append(QChar(character));
        }
        m_at += entity->size;
        return true;
    }

    const QStringRef m_markup;
    const Tags m_tags;
    QString m_text;
    Emphasis m_emphasis;
    int m_at = 0;
    bool m_beginsParagraph = false; ///< the next text starts a new line
};

bool isKept(QChar character)
{
    return !isUnsafeToPrint(character.unicode());
}

QString cleanedLine(const QString &text)
{
    QString line;
    line.reserve(text.size());
    for (const QChar character : text) {
        if (isKept(character)) {
            line.append(character);
        } else if (character == '\n' || character == '\t' || isSeparator(character)) {
            line.append(' ');
        }
    }
    return line;
}
} // namespace

BodyText readBody(const QString &whole)
{
    const QString markup = beginning(whole, maxTextLength);
    const bool isText = std::all_of(markup.begin(), markup.end(), IsPlain());
    return isText ? BodyText{markup, {}} : Reader(QStringRef(&markup), Reader::Tags::Remove).read();
}

QString plainLine(const QString &whole)
{
    const QString text = beginning(whole, maxLineLength);
    return std::all_of(text.begin(), text.end(), isKept) ? text : cleanedLine(text);
}
