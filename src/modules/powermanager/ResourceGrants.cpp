// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ResourceGrants.h"

bool ResourceGrants::isKnown(Resource resource)
{
    switch (resource) {
    case TavoPowerManagerResources::Processor:
    case TavoPowerManagerResources::Display:
    case TavoPowerManagerResources::Audio:
    case TavoPowerManagerResources::Network:
        return true;
    }
    return false;
}

void ResourceGrants::grant(Resource resource, const QString &module)
{
    m_holders[resource].insert(module);
}

bool ResourceGrants::release(Resource resource, const QString &module)
{
    const auto holders = m_holders.find(resource);
    if (holders == m_holders.end() || holders->erase(module) == 0) {
        return false;
    }
    if (holders->empty()) {
        m_holders.erase(holders);
    }
    return true;
}

void ResourceGrants::releaseAll(const QString &module)
{
    const TavoList<Resource> held = heldBy(module);
    for (int i = 0; i < held.size(); ++i) {
        release(held.at(i), module);
    }
}

TavoList<ResourceGrants::Resource> ResourceGrants::heldBy(const QString &module) const
{
    TavoList<Resource> held;
    for (auto it = m_holders.begin(); it != m_holders.end(); ++it) {
        if (it->count(module) != 0) {
            held.append(it.key());
        }
    }
    return held;
}

TavoList<TavoPowerManagerResourceHolders> ResourceGrants::holders() const
{
    TavoList<TavoPowerManagerResourceHolders> list;
    for (auto it = m_holders.begin(); it != m_holders.end(); ++it) {
        TavoList<QString> modules;
        for (const QString &module : *it) {
            modules.append(module);
        }
        list.append(TavoPowerManagerResourceHolders().setResource(it.key()).setHolders(modules));
    }
    return list;
}
