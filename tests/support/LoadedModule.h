// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/model/cmreconfigurable.h>
#include <core/model/cmworker.h>

#include <QLibrary>
#include <QStringList>
#include <QVariantHash>

#include <memory>
#include <stdexcept>

/// A worker from a module's library, created and deleted as a host does it, but in the calling thread.
/// The library stays loaded, because its loggers and meta types stay registered.
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

    /// Throws what the worker throws, and a std::bad_cast if the worker takes no configuration.
    QStringList reconfigure(const QVariantHash &config) const
    {
        return dynamic_cast<CMReconfigurable &>(*m_worker).reconfigure(config);
    }

private:
    QVariantHash m_config;
    std::unique_ptr<CMWorker> m_worker;
};
