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
/// A value: copies share the text and its hash, so comparing and looking up are cheap. The text is
/// canonical: it starts with a slash and has no empty segment. A path made of another and a segment
/// shares both texts and joins them when its own is asked for: of a hundred thousand nodes below one
/// path, none keeps the path's text. Thread: as any value.
class TAVO_API_EXPORT CMPath
{
public:
    /// The empty path, which names no node.
    CMPath() = default;

    /// Makes a path of a text, putting the text into its canonical form: a missing slash at the
    /// start is added, doubled and trailing ones are dropped. "" and "/" give the empty path.
    explicit CMPath(const QString &text);

    bool isEmpty() const { return !m_data; }
    QString toString() const { return m_data ? m_data->text() : QString(); }

    /// The last segment; empty for the empty path.
    QString name() const;

    /// The path without its last segment; empty at the top.
    CMPath parent() const;

    /// The path below this one: one more segment, or a relative text of several
    /// ("/player/revokeResources"). Never doubles a slash; an empty text gives the same path.
    CMPath operator+(const QString &relative) const;

    /// Whether the path begins with that one and goes on; every path is below the empty one.
    bool isBelow(const CMPath &ancestor) const;

    bool operator==(const CMPath &other) const;
    bool operator!=(const CMPath &other) const { return !(*this == other); }

    /// Reads a path carried in a variant, as a CMPath or as an absolute text. Anything else, a text
    /// without its slash at the start included, gives the empty path.
    static CMPath fromQVariant(const QVariant &variant);

    /// The form in which records carry a path: its text.
    QVariant toQVariant() const { return toString(); }

    /// Kept with the path, so that a look-up needn't read the text.
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

        const uint hash;
        const QString prefix;  ///< the text, or the text before the last segment
        const QString segment; ///< the last one, where it is kept by itself
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
