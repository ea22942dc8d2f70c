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

/// A module that a search found.
struct FoundModule
{
    QString name;
    QString file;
    /// Why the module can't be used.
    std::optional<QString> error;
};

/// Finds modules and loads them. A library stays loaded until the process ends: a module's static
/// loggers and the types it registers with Qt outlive its worker.
///
/// Thread: any.
class ModuleLoader
{
public:
    explicit ModuleLoader(QStringList searchPath);

    /// The file of @p library, which is a base name to look up or, with a slash in it, a path.
    Result<QString> find(const QString &library) const;

    /// Loads the file, with all its symbols resolved, and gives its entry point.
    static Result<WorkerCreate> load(const QString &file);

    /// Every module on the search path by name, loaded to see whether it can be. Where two folders
    /// have a module of the same name, the first folder's is the one.
    QVector<FoundModule> list() const;

private:
    QStringList m_searchPath;
};
