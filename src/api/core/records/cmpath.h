// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QExplicitlySharedDataPointer>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <iosfwd>

/// Names a node of the model: "/notifications/player/enqueue".
///
/// A value; copies share the text and its hash, so copying, comparing and looking up are cheap. The
/// text is canonical: it starts with a slash and has no empty segment.
///
/// A path that is made from another path and a segment shares both texts, and joins them when its
/// text is read. If it stored the joined text, an open notification would take 1781 bytes, and the
/// goal is 1536 (benchmark tavo_memory_use).
class TAVO_API_EXPORT CMPath
{
public:
    /// The empty path, which names no node.
    CMPath() = default;

    /// Makes a path from a text, which is made canonical: a missing slash at the start is added,
    /// double and trailing slashes are removed. "" and "/" give the empty path.
    explicit CMPath(const QString &text);

    /// Returns whether this is the empty path.
    bool isEmpty() const { return !m_data; }
    /// The canonical text; empty for the empty path.
    QString toString() const { return m_data ? m_data->text() : QString(); }

    /// The last segment; empty for the empty path.
    QString name() const;

    /// The path without its last segment; empty at the top.
    CMPath parent() const;

    /// A path below this one: appends a text of one or more segments, such as
    /// "/player/revokeResources". An empty text gives the same path.
    CMPath operator+(const QString &relative) const;

    /// Returns whether the path starts with all segments of the ancestor and has more. Every path
    /// except the empty one is below the empty one.
    bool isBelow(const CMPath &ancestor) const;

    /// Returns whether the path is the parent with one more segment.
    bool isChildOf(const CMPath &parent) const;

    /// Returns whether the texts are equal.
    bool operator==(const CMPath &other) const;
    /// Returns whether the texts differ.
    bool operator!=(const CMPath &other) const { return !(*this == other); }

    /// Reads a path from a variant that holds a CMPath, or a text that starts with a slash.
    /// Anything else gives the empty path.
    static CMPath fromQVariant(const QVariant &variant);

    /// The form in which records carry a path: its text.
    QVariant toQVariant() const { return toString(); }

    /// The hash of the text. Computed once, when the path is made.
    uint hash() const { return m_data ? m_data->hash : 0; }

private:
    struct Data : QSharedData
    {
        Data(const QString &canonical);
        Data(const QString &parentText, const QString &segment);

        QString text() const { return segment.isEmpty() ? prefix : joined(); }
        QString joined() const;
        bool operator==(const Data &other) const;
        bool isJoinedOf(const Data &parts) const;
        bool isBelow(const QString &ancestor) const;
        bool isChildOf(const QString &parent) const;

        const uint hash;
        const QString prefix;  ///< the whole text, or the text before the segment
        const QString segment; ///< the last segment; empty if it is part of the prefix
    };

    explicit CMPath(const Data *data)
        : m_data(data)
    {
    }

    QExplicitlySharedDataPointer<const Data> m_data;
};

Q_DECLARE_METATYPE(CMPath)
Q_DECLARE_TYPEINFO(CMPath, Q_MOVABLE_TYPE);

inline uint qHash(const CMPath &path, uint seed = 0)
{
    return path.hash() ^ seed;
}

TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const CMPath &path);
