// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/model/cmworker.h>

#include <QString>
#include <QStringList>
#include <QVariantHash>

#include <memory>

namespace TavoTesting {
/// A worker from a module's library, created and deleted as a host does it, but in the calling thread.
/// The library stays loaded, because its loggers and meta types stay registered.
class LoadedModule
{
public:
    /// Loads the library and calls worker_create with the name and the configuration. Throws what
    /// worker_create throws, and std::logic_error if the file is no module.
    LoadedModule(const QString &file, const char *name, QVariantHash config = {});
    ~LoadedModule();

    LoadedModule(const LoadedModule &) = delete;
    LoadedModule &operator=(const LoadedModule &) = delete;

    /// The module's worker. Owned by this object.
    CMWorker *worker() const { return m_worker.get(); }

    /// Hands the worker another configuration, as a host does when it reloads, and returns what the
    /// worker returns. Throws what the worker throws, and a std::bad_cast if it is no CMReconfigurable.
    QStringList reconfigure(const QVariantHash &config) const;

private:
    QVariantHash m_config;
    std::unique_ptr<CMWorker> m_worker;
};
} // namespace TavoTesting
