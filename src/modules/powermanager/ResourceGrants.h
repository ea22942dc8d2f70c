// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QMap>
#include <QString>

#include <set>

/// The modules that hold each resource. A module that acquires a resource twice holds it once.
class ResourceGrants
{
public:
    using Resource = TavoPowerManagerResources::Enum;

    static bool isKnown(Resource resource);

    void grant(Resource resource, const QString &module);
    /// Returns whether the module held the resource.
    bool release(Resource resource, const QString &module);
    void releaseAll(const QString &module);
    void clear() { m_holders.clear(); }

    TavoList<Resource> heldBy(const QString &module) const;

    /// The resources that are held, in the order of their numbers, with their holders sorted.
    TavoList<TavoPowerManagerResourceHolders> holders() const;

private:
    QMap<Resource, std::set<QString>> m_holders; ///< no set is empty
};
