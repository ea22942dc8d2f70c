// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/text/ShownText.h"

#include "base/Printable.h"

#include <QChar>
#include <QStringList>

#include <algorithm>

namespace {
constexpr QChar ellipsis(0x2026);
constexpr QChar lineSeparator(0x2028);
constexpr QChar rightToLeftMark(0x200F);

bool isMark(uint code)
{
    const QChar::Category category = QChar::category(code);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing ||
           category == QChar::Mark_SpacingCombining;
}

/// Takes characters until the limits are reached.
class Cutter
{
public:
    enum class Lines { Keep, Join };

    explicit Cutter(Lines lines = Lines::Keep)
        : m_lines(lines)
    {
    }

    /// Whether no more is shown.
    bool isFull() const { return m_isCut; }

    void add(uint code)
    {
        if (++m_read > maxReadLength || m_shown >= maxShownLength) {
            m_isCut = true;
            return;
        }
        if (code == '\n' || code == '\t' || code == lineSeparator.unicode() || code == 0x2029) {
            code = code == '\t' || m_lines == Lines::Join ? ' ' : '\n';
        } else if (code == '\r' || isUnsafeToPrint(code) || code == 0xFFFC) {
            return;
        }
        m_marks = isMark(code) ? m_marks + 1 : 0;
        if (m_marks <= maxShownMarks) {
            ++m_shown;
            append(code);
        }
    }

    void setEscaping() { m_escapes = true; }
    void appendRaw(const QString &text) { m_text += text; }

    QString take()
    {
        if (m_isCut) {
            m_text += ellipsis;
        }
        return std::move(m_text);
    }

private:
    void append(uint code)
    {
        if (m_escapes && code == '<') {
            m_text += QLatin1String("&lt;");
        } else if (m_escapes && code == '>') {
            m_text += QLatin1String("&gt;");
        } else if (m_escapes && code == '&') {
            m_text += QLatin1String("&amp;");
        } else if (m_escapes && code == '\n') {
            m_text += QLatin1String("<br>");
        } else if (QChar::requiresSurrogates(code)) {
            m_text += QChar(QChar::highSurrogate(code));
            m_text += QChar(QChar::lowSurrogate(code));
        } else {
            m_text += QChar(ushort(code));
        }
    }

    const Lines m_lines;
    bool m_escapes = false;
    bool m_isCut = false;
    int m_read = 0;
    int m_shown = 0;
    int m_marks = 0;
    QString m_text;
};

/// The code point at the position, which moves behind it. A lone surrogate becomes U+FFFD.
uint takeCode(const QString &text, int &position)
{
    const QChar first = text[position++];
    if (!first.isSurrogate()) {
        return first.unicode();
    }
    if (first.isHighSurrogate() && position < text.size() && text[position].isLowSurrogate()) {
        return QChar::surrogateToUcs4(first, text[position++]);
    }
    return QChar::ReplacementCharacter;
}

QString cut(const QString &text, Cutter cutter)
{
    for (int position = 0; position < text.size() && !cutter.isFull();) {
        cutter.add(takeCode(text, position));
    }
    return cutter.take();
}

/// Reads the model's form of markup. What is not of that form is text.
class StyledReader
{
public:
    explicit StyledReader(const QString &markup)
        : m_markup(markup)
    {
        m_cutter.setEscaping();
    }

    QString read()
    {
        while (m_position < m_markup.size() && !m_cutter.isFull()) {
            if (!readTag() && !readEntity()) {
                m_cutter.add(takeCode(m_markup, m_position));
            }
        }
        QString text = m_cutter.take();
        while (!m_open.isEmpty()) {
            text += QStringLiteral("</%1>").arg(m_open.takeLast());
        }
        return text;
    }

private:
    /// Bounds the closing tags that follow a text that was cut.
    static constexpr int s_maxDepth = 16;
    static constexpr int s_maxTags = 1000;

    bool readTag()
    {
        for (const char *name : {"b", "i", "u"}) {
            const QLatin1String tag(name);
            if (skip(QStringLiteral("<%1>").arg(tag))) {
                if (m_open.size() < s_maxDepth && ++m_tags <= s_maxTags) {
                    m_open.append(tag);
                    m_cutter.appendRaw(QStringLiteral("<%1>").arg(tag));
                } else {
                    ++m_ignored;
                }
                return true;
            }
            if (skip(QStringLiteral("</%1>").arg(tag))) {
                close(tag);
                return true;
            }
        }
        return false;
    }

    void close(QLatin1String tag)
    {
        if (m_ignored > 0) {
            --m_ignored;
        } else if (!m_open.isEmpty() && m_open.last() == tag) {
            m_open.removeLast();
            m_cutter.appendRaw(QStringLiteral("</%1>").arg(tag));
        }
    }

    bool readEntity()
    {
        struct Entity
        {
            const char *name;
            char character;
        };
        for (const Entity entity :
             {Entity{"&amp;", '&'}, Entity{"&lt;", '<'}, Entity{"&gt;", '>'}}) {
            if (skip(QLatin1String(entity.name))) {
                m_cutter.add(uint(entity.character));
                return true;
            }
        }
        return false;
    }

    bool skip(const QString &part)
    {
        if (QStringView(m_markup).mid(m_position, part.size()) != part) {
            return false;
        }
        m_position += part.size();
        return true;
    }

    const QString &m_markup;
    int m_position = 0;
    int m_tags = 0;
    int m_ignored = 0; ///< open tags that were left out
    QStringList m_open;
    Cutter m_cutter;
};
/// Of the first letter of a line; Qt::LayoutDirectionAuto if it has none.
Qt::LayoutDirection directionOf(const QString &line, bool isStyled)
{
    QChar skippedUntil; // the end of a tag or an entity
    for (int position = 0; position < line.size();) {
        const uint code = takeCode(line, position);
        if (!skippedUntil.isNull()) {
            skippedUntil = code == skippedUntil.unicode() ? QChar() : skippedUntil;
        } else if (isStyled && (code == '<' || code == '&')) {
            skippedUntil = QLatin1Char(code == '<' ? '>' : ';');
        } else if (QChar::direction(code) == QChar::DirL) {
            return Qt::LeftToRight;
        } else if (QChar::direction(code) == QChar::DirR ||
                   QChar::direction(code) == QChar::DirAL) {
            return Qt::RightToLeft;
        }
    }
    return Qt::LayoutDirectionAuto;
}

/// Adds the tags that the line opens, and takes away those that it closes.
void followTags(const QString &line, QStringList &open)
{
    for (int begin = line.indexOf(QLatin1Char('<')); begin >= 0;
         begin = line.indexOf(QLatin1Char('<'), begin + 1)) {
        if (line.mid(begin + 1, 1) != QLatin1String("/")) {
            open.append(line.mid(begin + 1, 1));
        } else if (!open.isEmpty()) {
            open.removeLast();
        }
    }
}

QString openingTags(const QStringList &open)
{
    return open.isEmpty() ? QString() : QStringLiteral("<%1>").arg(open.join(QStringLiteral("><")));
}

QString closingTags(const QStringList &open)
{
    QString tags;
    for (const QString &tag : open) {
        tags.prepend(QStringLiteral("</%1>").arg(tag));
    }
    return tags;
}
} // namespace

QString shownText(const QString &text)
{
    return cut(text, Cutter());
}

QString shownLine(const QString &text)
{
    return cut(text, Cutter(Cutter::Lines::Join)).trimmed();
}

QString styledText(const QString &markup)
{
    return StyledReader(markup).read();
}

QStringList textParts(const QString &text, bool isStyled)
{
    const QString separator = isStyled ? QStringLiteral("<br>") : QStringLiteral("\n");
    QStringList parts;
    QStringList open;
    Qt::LayoutDirection partDirection = Qt::LayoutDirectionAuto;
    for (const QString &line : text.split(separator)) {
        const Qt::LayoutDirection direction = directionOf(line, isStyled);
        const bool isOther = direction != Qt::LayoutDirectionAuto && direction != partDirection;
        const bool isNew = isOther && partDirection != Qt::LayoutDirectionAuto;
        if (parts.isEmpty()) {
            parts.append(line);
        } else if (isNew && parts.size() < maxTextParts) {
            parts.last() += closingTags(open);
            parts.append(openingTags(open) + line);
        } else {
            parts.last() += separator + line;
        }
        if (isOther) {
            partDirection = direction;
        }
        if (isStyled) {
            followTags(line, open);
        }
    }
    for (QString &part : parts) {
        // Text items take the letters of tags for those of the text.
        if (isStyled && directionOf(part, true) == Qt::RightToLeft) {
            part.prepend(rightToLeftMark);
        }
    }
    return parts;
}
