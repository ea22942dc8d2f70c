// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmpath.h"

#include "core/tavo/stream.h"

#include <QHash>

namespace {
constexpr QChar slash = QLatin1Char('/');

bool isCanonical(const QString &text)
{
    if (text.size() < 2 || text.front() != slash || text.back() == slash) {
        return false;
    }
    return !text.contains(QLatin1String("//"));
}

QString canonical(const QString &text)
{
    QString result;
    result.reserve(text.size() + 1);
    const auto segments = text.splitRef(slash, Qt::SkipEmptyParts);
    for (const QStringRef &segment : segments) {
        result.append(slash).append(segment);
    }
    return result;
}
} // namespace

CMPath::CMPath(const QString &text)
{
    setCanonical(isCanonical(text) ? text : canonical(text));
}

void CMPath::setCanonical(const QString &text)
{
    if (text.isEmpty()) {
        return;
    }
    auto *data = new Data;
    data->text = text;
    data->hash = qHash(text);
    m_data = data;
}

QString CMPath::name() const
{
    return m_data ? m_data->text.mid(m_data->text.lastIndexOf(slash) + 1) : QString();
}

CMPath CMPath::parent() const
{
    CMPath result;
    if (m_data) {
        result.setCanonical(m_data->text.left(m_data->text.lastIndexOf(slash)));
    }
    return result;
}

CMPath CMPath::operator+(const QString &relative) const
{
    if (isEmpty() || relative.isEmpty()) {
        return isEmpty() ? CMPath(relative) : *this;
    }
    if (relative.front() == slash || relative.contains(slash)) {
        return CMPath(m_data->text + slash + relative);
    }
    CMPath result;
    result.setCanonical(m_data->text + slash + relative);
    return result;
}

bool CMPath::operator==(const CMPath &other) const
{
    if (m_data == other.m_data) {
        return true;
    }
    return m_data && other.m_data && m_data->hash == other.m_data->hash &&
           m_data->text == other.m_data->text;
}

CMPath CMPath::fromQVariant(const QVariant &variant)
{
    if (variant.userType() == qMetaTypeId<CMPath>()) {
        return variant.value<CMPath>();
    }
    if (variant.userType() != QMetaType::QString) {
        return {};
    }
    const QString text = variant.toString();
    return text.startsWith(slash) ? CMPath(text) : CMPath();
}

std::ostream &operator<<(std::ostream &stream, const CMPath &path)
{
    return stream << path.toString();
}
