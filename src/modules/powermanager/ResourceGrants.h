// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <set>

#include <QMap>
#include <QString>

/// Who holds what: a set of modules a resource. A module that acquires twice holds once.
///
/// A value without a thread of its own.
class ResourceGrants
{
public:
    using Resource = TavoPowerManagerResources::Enum;

    static bool isKnown(Resource resource);

    /// Return whether anything changed.
    bool grant(Resource resource, const QString &module);
    bool release(Resource resource, const QString &module);
    bool releaseAll(const QString &module);

    void clear() { m_holders.clear(); }

    TavoList<Resource> heldBy(const QString &module) const;

    /// The resources that somebody holds, in the order of their numbers; holders sorted.
    TavoList<TavoPowerManagerResourceHolders> holders() const;

private:
    QMap<Resource, std::set<QString>> m_holders; ///< no empty set stays in it
};
