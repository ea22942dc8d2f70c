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

/// What a translatable text is made of. The texts are UTF-8 and are read while a TrString is made.
struct TrCharData
{
    const char *context;        ///< who says it, usually a class
    const char *source;         ///< the text as it stands in the code
    const char *disambiguation; ///< tells equal sources apart; null for none
    int count;                  ///< the number that picks the plural form; -1 for none
};

/// An argument of a translatable text: stands for %1, %2, ... in it.
class TAVO_API_EXPORT TrArg
{
public:
    TrArg() = default;
    TrArg(const QString &text)
        : m_value(text)
    {
    }
    TrArg(int number)
        : m_value(number)
    {
    }
    TrArg(double number)
        : m_value(number)
    {
    }

    QString toString() const { return m_value.toString(); }
    QVariant toQVariant() const { return m_value; }
    bool operator==(const TrArg &other) const { return m_value == other.m_value; }

private:
    friend class TrString;
    explicit TrArg(QVariant value)
        : m_value(std::move(value))
    {
    }

    QVariant m_value;
};

/// A text that is translated when it is shown: it keeps context, source and arguments until then.
///
/// A value; copies share. A plain text is a TrString too, shown as it is.
class TAVO_API_EXPORT TrString
{
public:
    TrString() = default;
    TrString(const char *text);
    TrString(const QString &text)
        : m_text(text)
    {
    }
    TrString(const TrCharData &data, const QList<TrArg> &arguments);

    bool isEmpty() const { return m_text.isEmpty(); }

    /// The text in the language of the installed translators (QCoreApplication), arguments put in.
    QString toString() const;

    /// True when there is something to translate.
    bool isTranslatable() const { return bool(m_translation); }

    /// The form in which records carry a text: a plain one as a string, a translatable one as a
    /// hash of its parts, so that whoever shows it can still translate it.
    operator QVariant() const;
    static TrString fromQVariant(const QVariant &variant);

    bool operator==(const TrString &other) const;
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

/// The translation context of a member function's signature: its class, scopes included. Empty for
/// a free function.
TAVO_API_EXPORT QByteArray trExtractContext(const char *signature);

/// A translatable text in the context of the enclosing member function's class.
#define TAVO_TR(text)                                                                              \
    TrString(TrCharData{trExtractContext(Q_FUNC_INFO).constData(), text, nullptr, -1}, {})

Q_DECLARE_METATYPE(TrString)
Q_DECLARE_TYPEINFO(TrString, Q_MOVABLE_TYPE);
