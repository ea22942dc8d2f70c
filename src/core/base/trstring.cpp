// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/trstring.h"

#include <QCoreApplication>
#include <QVariantHash>

#include <algorithm>

bool TrString::Translation::operator==(const Translation &other) const
{
    return context == other.context && disambiguation == other.disambiguation &&
           count == other.count && arguments == other.arguments;
}

namespace {
const QString contextKey = QStringLiteral("context");
const QString sourceKey = QStringLiteral("source");
const QString disambiguationKey = QStringLiteral("disambiguation");
const QString countKey = QStringLiteral("count");
const QString argumentsKey = QStringLiteral("arguments");

/// The place-holders are %1 to %9.
constexpr int maxArguments = 9;

/// No translation has a longer source. Qt takes quadratic time to insert the count into a text.
constexpr int maxTranslatedLength = 1000;

/// Inserts the arguments in one pass, so that a "%2" in the first argument is kept.
QString substituted(const QString &text, const QList<TrArg> &arguments)
{
    QString result;
    int left = TrString::maxInsertedLength;
    for (int i = 0; i < text.size(); ++i) {
        const int number = text.at(i) == QLatin1Char('%') && i + 1 < text.size()
                               ? text.at(i + 1).digitValue()
                               : -1;
        if (number >= 1 && number <= arguments.size()) {
            // Converting an argument takes time too.
            const QString inserted =
                left > 0 ? arguments.at(number - 1).toString().left(left) : QString();
            left -= inserted.size();
            result += inserted;
            ++i;
        } else {
            result += text.at(i);
        }
    }
    return result;
}

QString translated(const QString &source, const QByteArray &context,
                   const QByteArray &disambiguation, int count)
{
    if (source.size() > maxTranslatedLength) {
        return source;
    }
    const QByteArray utf8 = source.toUtf8();
    // Such a text has no translation, and QCoreApplication::translate() would return only a part of
    // it.
    if (source.contains(QChar::Null) || QString::fromUtf8(utf8) != source) {
        return source;
    }
    return QCoreApplication::translate(
        context.constData(), utf8.constData(),
        disambiguation.isEmpty() ? nullptr : disambiguation.constData(), count);
}
} // namespace

TrString::TrString(const char *text)
    : m_text(QString::fromUtf8(text))
{
}

TrString::TrString(const TrCharData &data, const QList<TrArg> &arguments)
    : m_text(QString::fromUtf8(data.source))
{
    // An empty text stays plain, so that it is still equal when it is read from a record.
    if (m_text.isEmpty()) {
        return;
    }
    auto *translation = new Translation;
    translation->context = data.context;
    translation->disambiguation = data.disambiguation;
    translation->count = data.count;
    translation->arguments = arguments.mid(0, maxArguments);
    m_translation = translation;
}

QString TrString::toString() const
{
    if (!m_translation) {
        return m_text;
    }
    const Translation &parts = *m_translation;
    return substituted(translated(m_text, parts.context, parts.disambiguation, parts.count),
                       parts.arguments);
}

TrString::operator QVariant() const
{
    if (!m_translation) {
        return m_text;
    }
    QVariantList arguments;
    for (const TrArg &argument : m_translation->arguments) {
        arguments.append(argument.toQVariant());
    }
    return QVariantHash{{contextKey, QString::fromUtf8(m_translation->context)},
                        {sourceKey, m_text},
                        {disambiguationKey, QString::fromUtf8(m_translation->disambiguation)},
                        {countKey, m_translation->count},
                        {argumentsKey, arguments}};
}

TrString TrString::fromQVariant(const QVariant &variant)
{
    switch (variant.userType()) {
    case QMetaType::QString:
        return variant.toString();
    case QMetaType::QVariantHash:
    case QMetaType::QVariantMap:
        break;
    default:
        return variant.value<TrString>();
    }
    const QVariantHash parts = variant.toHash();
    Translation translation;
    translation.context = parts.value(contextKey).toString().toUtf8();
    translation.disambiguation = parts.value(disambiguationKey).toString().toUtf8();
    translation.count = parts.value(countKey, -1).toInt();
    const QVariantList arguments = parts.value(argumentsKey).toList().mid(0, maxArguments);
    for (const QVariant &argument : arguments) {
        translation.arguments.append(TrArg(argument));
    }
    TrString result(parts.value(sourceKey).toString());
    if (!result.isEmpty()) {
        result.m_translation = new Translation(translation);
    }
    return result;
}

bool TrString::operator==(const TrString &other) const
{
    if (m_text != other.m_text || isTranslatable() != other.isTranslatable()) {
        return false;
    }
    return !m_translation || *m_translation == *other.m_translation;
}

QByteArray trExtractContext(const char *signature)
{
    QByteArray name = signature;
    name.truncate(std::max(name.indexOf('('), 0));
    name = name.mid(name.lastIndexOf(' ') + 1);
    while (name.startsWith('*') || name.startsWith('&')) {
        name.remove(0, 1);
    }
    return name.left(std::max(name.lastIndexOf("::"), 0));
}
