// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/cmpath.h"

#include "core/base/stream.h"
#include "core/records/secrethash.h"

#include <QStringView>
#include <QVarLengthArray>

#include <algorithm>

namespace {
constexpr QChar slash = QLatin1Char('/');

bool isCanonical(const QString &text)
{
    if (text.size() < 2 || text.front() != slash || text.back() == slash) {
        return false;
    }
    // Runs for every path in a record; QString::contains() takes ten times as long.
    const auto twoSlashes = [](QChar one, QChar next) { return one == slash && next == slash; };
    return std::adjacent_find(text.begin(), text.end(), twoSlashes) == text.end();
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

void join(const QString &prefix, const QString &segment, QChar *target)
{
    target = std::copy(prefix.begin(), prefix.end(), target);
    *target = slash;
    std::copy(segment.begin(), segment.end(), target + 1);
}

/// The hash of the joined text, so that equal paths have equal hashes however they were made.
uint hashOfJoined(const QString &prefix, const QString &segment)
{
    QVarLengthArray<QChar, 256> text(prefix.size() + 1 + segment.size());
    join(prefix, segment, text.data());
    return cmSecretHash(QStringView(text.constData(), text.size()));
}
} // namespace

CMPath::Data::Data(const QString &canonical)
    : hash(cmSecretHash(canonical))
    , prefix(canonical)
{
}

CMPath::Data::Data(const QString &parentText, const QString &lastSegment)
    : hash(hashOfJoined(parentText, lastSegment))
    , prefix(parentText)
    , segment(lastSegment)
{
}

QString CMPath::Data::joined() const
{
    QString result(prefix.size() + 1 + segment.size(), Qt::Uninitialized);
    join(prefix, segment, result.data());
    return result;
}

bool CMPath::Data::operator==(const Data &other) const
{
    if (hash != other.hash) {
        return false;
    }
    if (segment.isEmpty() != other.segment.isEmpty()) {
        return segment.isEmpty() ? isJoinedOf(other) : other.isJoinedOf(*this);
    }
    return segment == other.segment && prefix == other.prefix;
}

bool CMPath::Data::isJoinedOf(const Data &parts) const
{
    const int slashAt = parts.prefix.size();
    return prefix.size() == slashAt + 1 + parts.segment.size() && prefix.at(slashAt) == slash &&
           prefix.endsWith(parts.segment) && prefix.startsWith(parts.prefix);
}

bool CMPath::Data::isBelow(const QString &ancestor) const
{
    // A segment holds no slash, so the ancestor is the prefix or a part of it.
    const int slashAt = ancestor.size();
    if (prefix.size() == slashAt) {
        return !segment.isEmpty() && prefix == ancestor;
    }
    return prefix.size() > slashAt && prefix.at(slashAt) == slash && prefix.startsWith(ancestor);
}

bool CMPath::Data::isChildOf(const QString &parent) const
{
    return segment.isEmpty()
               ? prefix.lastIndexOf(slash) == parent.size() && prefix.startsWith(parent)
               : prefix == parent;
}

CMPath::CMPath(const QString &text)
{
    const QString result = isCanonical(text) ? text : canonical(text);
    if (!result.isEmpty()) {
        m_data = new Data(result);
    }
}

QString CMPath::name() const
{
    if (!m_data || !m_data->segment.isEmpty()) {
        return m_data ? m_data->segment : QString();
    }
    return m_data->prefix.mid(m_data->prefix.lastIndexOf(slash) + 1);
}

CMPath CMPath::parent() const
{
    if (!m_data) {
        return {};
    }
    const QString &prefix = m_data->prefix;
    return CMPath(m_data->segment.isEmpty() ? prefix.left(prefix.lastIndexOf(slash)) : prefix);
}

CMPath CMPath::operator+(const QString &relative) const
{
    if (isEmpty() || relative.isEmpty()) {
        return isEmpty() ? CMPath(relative) : *this;
    }
    if (relative.contains(slash)) {
        return CMPath(toString() + slash + relative);
    }
    return CMPath(new Data(toString(), relative));
}

bool CMPath::isBelow(const CMPath &ancestor) const
{
    return m_data && (!ancestor.m_data || m_data->isBelow(ancestor.toString()));
}

bool CMPath::isChildOf(const CMPath &parent) const
{
    return m_data && m_data->isChildOf(parent.toString());
}

bool CMPath::operator==(const CMPath &other) const
{
    return m_data == other.m_data || (m_data && other.m_data && *m_data == *other.m_data);
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
