// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/JsonPosition.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <cctype>

namespace {
/// Walks over JSON text without syntax errors.
class Walk
{
public:
    explicit Walk(const QByteArray &json)
        : m_json(json)
    {
    }

    int line() const { return m_json.left(m_index).count('\n') + 1; }

    /// From the beginning of an object to that of the key's value. If it is not there, nothing moves.
    bool enterKey(const QString &key)
    {
        return enter('{', [this, &key](int) {
            const QByteArray name = text();
            skip(); // the colon
            return QJsonDocument::fromJson('[' + name + ']').array().at(0).toString() == key;
        });
    }

    /// From the beginning of an array to that of an element.
    bool enterElement(int wanted)
    {
        return enter('[', [wanted](int index) { return index == wanted; });
    }

private:
    template <typename IsWanted>
    bool enter(char opening, IsWanted isWanted)
    {
        const int start = m_index;
        skipBlanks();
        if (peek() == opening) {
            skip();
            for (int index = 0; peek() != '}' && peek() != ']' && peek() != 0; ++index) {
                if (isWanted(index)) {
                    skipBlanks();
                    return true;
                }
                skipValue();
                if (peek() == ',') {
                    skip();
                }
            }
        }
        m_index = start;
        return false;
    }

    char peek()
    {
        skipBlanks();
        return m_index < m_json.size() ? m_json.at(m_index) : char(0);
    }

    void skip()
    {
        skipBlanks();
        ++m_index;
    }

    void skipBlanks()
    {
        while (m_index < m_json.size() &&
               std::isspace(static_cast<unsigned char>(m_json.at(m_index))) != 0) {
            ++m_index;
        }
    }

    /// The text at which the walk is, with its quotes.
    QByteArray text()
    {
        skipBlanks();
        const int start = m_index++;
        while (m_index < m_json.size() && m_json.at(m_index) != '"') {
            m_index += m_json.at(m_index) == '\\' ? 2 : 1;
        }
        ++m_index;
        return m_json.mid(start, m_index - start);
    }

    /// Without recursion: nothing but the depth counts.
    void skipValue()
    {
        int depth = 0;
        do {
            const char next = peek();
            if (next == 0) {
                return;
            }
            if (next == '"') {
                text();
                continue;
            }
            if (next == '{' || next == '[') {
                ++depth;
            } else if (next == '}' || next == ']') {
                --depth;
            } else if (depth == 0) {
                skipScalar();
                return;
            }
            ++m_index;
        } while (depth > 0);
    }

    void skipScalar()
    {
        while (m_index < m_json.size() && m_json.at(m_index) != ',' && m_json.at(m_index) != '}' &&
               m_json.at(m_index) != ']') {
            ++m_index;
        }
    }

    const QByteArray m_json;
    int m_index = 0;
};
} // namespace

int lineInJson(const QByteArray &json, const QString &key)
{
    static const QRegularExpression step(QStringLiteral("\\[(\\d+)\\]|[^.\\[\\]]+"));
    Walk walk(json);
    auto steps = step.globalMatch(key);
    while (steps.hasNext()) {
        const auto match = steps.next();
        const bool isElement = !match.captured(1).isEmpty();
        const bool isFound = isElement ? walk.enterElement(match.captured(1).toInt())
                                       : walk.enterKey(match.captured(0));
        if (!isFound) {
            break;
        }
    }
    return walk.line();
}
