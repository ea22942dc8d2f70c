// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "testing/LoadedModule.h"

#include <core/model/cmreconfigurable.h>

#include <QLibrary>

#include <stdexcept>

namespace TavoTesting {
LoadedModule::LoadedModule(const QString &file, const char *name, QVariantHash config)
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

LoadedModule::~LoadedModule() = default;

QStringList LoadedModule::reconfigure(const QVariantHash &config) const
{
    return dynamic_cast<CMReconfigurable &>(*m_worker).reconfigure(config);
}
} // namespace TavoTesting
