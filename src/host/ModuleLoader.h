// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// A module's entry point; see core/base/export.h.
using WorkerCreate = void *(*)(const char *name, void *config);

/// A module found on the search path.
struct FoundModule
{
    QString name;
    QString file;
    /// Why the module can't be used.
    std::optional<QString> error;
};

/// Finds modules and loads them. Libraries stay loaded until the process ends: a module's static
/// loggers and the types that it registers with Qt outlive its worker.
///
/// Thread: any.
class ModuleLoader
{
public:
    explicit ModuleLoader(QStringList searchPath);

    /// The file of @p library, which is a path if it has a slash, else a name to look up.
    Result<QString> find(const QString &library) const;

    /// Loads the file, resolves all its symbols, and returns its entry point.
    static Result<WorkerCreate> load(const QString &file);

    /// All modules on the search path, sorted by name, after trying to load each. If several
    /// modules have the same name, only the one in the first folder.
    QVector<FoundModule> list() const;

private:
    QStringList m_searchPath;
};
