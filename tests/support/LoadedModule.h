// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/model/cmworker.h>

#include <memory>
#include <stdexcept>

#include <QLibrary>
#include <QVariantHash>

/// A worker out of a module's library, made and deleted as a host does it, but in the calling
/// thread. The library stays loaded: what it registered with the log and the meta-type system does.
class LoadedModule
{
public:
    /// Throws what worker_create throws.
    LoadedModule(const QString &file, const char *name, QVariantHash config = {})
        : m_config(std::move(config))
    {
        using WorkerCreate = void *(*)(const char *, void *);
        QLibrary library(file);
        library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
        const auto create = reinterpret_cast<WorkerCreate>(library.resolve("worker_create"));
        if (create == nullptr) {
            throw std::logic_error(library.errorString().toStdString());
        }
        m_worker.reset(static_cast<CMWorker *>(create(name, &m_config)));
    }

    CMWorker *worker() const { return m_worker.get(); }

private:
    QVariantHash m_config;
    std::unique_ptr<CMWorker> m_worker;
};
