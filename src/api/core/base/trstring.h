// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QByteArray>
#include <QExplicitlySharedDataPointer>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariant>

/// The parts of a translatable text, in UTF-8. They are copied when a TrString is made.
struct TrCharData
{
    const char *context;        ///< usually the class that the text is from
    const char *source;         ///< the untranslated text
    const char *disambiguation; ///< distinguishes equal sources; may be null
    int count;                  ///< chooses the plural form; -1: no plural
};

/// An argument of a translatable text; replaces one of %1 to %9 in it.
class TAVO_API_EXPORT TrArg
{
public:
    TrArg() = default;
    /// A text, inserted as it is.
    TrArg(const QString &text)
        : m_value(text)
    {
    }
    /// A number, inserted in decimal digits.
    TrArg(int number)
        : m_value(number)
    {
    }
    /// A number, inserted with as many digits as are needed to tell it from all others.
    TrArg(double number)
        : m_value(number)
    {
    }

    /// The argument as it is inserted.
    QString toString() const { return m_value.toString(); }
    /// The string or number that was given; invalid for an empty argument.
    QVariant toQVariant() const { return m_value; }
    /// Returns whether both hold equal values.
    bool operator==(const TrArg &other) const { return m_value == other.m_value; }

private:
    friend class TrString;
    explicit TrArg(QVariant value)
        : m_value(std::move(value))
    {
    }

    QVariant m_value;
};

/// A text that is translated when it is shown. Until then it keeps its context, source and
/// arguments. May also hold a plain text, which is shown untranslated. A value; copies share their
/// data.
class TAVO_API_EXPORT TrString
{
public:
    TrString() = default;
    /// A plain text, in UTF-8.
    TrString(const char *text);
    /// A plain text.
    TrString(const QString &text)
        : m_text(text)
    {
    }

    /// Keeps the first nine arguments.
    TrString(const TrCharData &data, const QList<TrArg> &arguments);

    /// In characters. Limits what a text from another program takes when it is shown.
    static constexpr int maxInsertedLength = 1 << 14;

    /// Returns whether the text, or the source of a translatable one, is empty.
    bool isEmpty() const { return m_text.isEmpty(); }

    /// The text with its arguments, in the language of the translators installed in
    /// QCoreApplication. The arguments add at most maxInsertedLength characters; the rest is left
    /// out. A source of more than 1000 characters is not translated.
    QString toString() const;

    /// Returns whether the text is translated when it is shown.
    bool isTranslatable() const { return bool(m_translation); }

    /// The text as records carry it: a plain text as a string, a translatable one as a hash of its
    /// parts, so that the program that shows it can translate it.
    operator QVariant() const;
    /// Reads what the conversion to QVariant made, or any string. Anything else gives an empty text.
    static TrString fromQVariant(const QVariant &variant);

    /// Returns whether texts, sources and arguments are equal; the language does not matter.
    bool operator==(const TrString &other) const;
    /// The opposite.
    bool operator!=(const TrString &other) const { return !(*this == other); }

private:
    struct Translation : QSharedData
    {
        QByteArray context;
        QByteArray disambiguation;
        int count = -1;
        QList<TrArg> arguments;

        bool operator==(const Translation &other) const;
    };

    QString m_text;
    QExplicitlySharedDataPointer<const Translation> m_translation;
};

/// The translation context of a member function, from its signature: the class with its scopes.
/// Empty for a free function.
TAVO_API_EXPORT QByteArray trExtractContext(const char *signature);

/// A translatable text; its context is the class of the enclosing member function.
#define TAVO_TR(text)                                                                              \
    TrString(TrCharData{trExtractContext(Q_FUNC_INFO).constData(), text, nullptr, -1}, {})

Q_DECLARE_METATYPE(TrString)
Q_DECLARE_TYPEINFO(TrString, Q_MOVABLE_TYPE);
