// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ModuleLoader.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QMap>

#include <utility>

namespace {
const QLatin1String libraryPrefix("libtavo_");
const QLatin1String librarySuffix(".so");
} // namespace

ModuleLoader::ModuleLoader(QStringList searchPath)
    : m_searchPath(std::move(searchPath))
{
}

Result<QString> ModuleLoader::find(const QString &library) const
{
    if (library.contains(QLatin1Char('/'))) {
        if (QFileInfo(library).isFile()) {
            return library;
        }
        return Failure{QStringLiteral("there is no file %1").arg(library)};
    }
    const QString fileName = libraryPrefix + library + librarySuffix;
    for (const QString &folder : m_searchPath) {
        const QFileInfo info(QDir(folder), fileName);
        if (info.isFile()) {
            return info.absoluteFilePath();
        }
    }
    return Failure{
        QStringLiteral("there is no %1 in %2; install it, or name its folder in modulePath")
            .arg(fileName, m_searchPath.join(QLatin1String(", ")))};
}

Result<WorkerCreate> ModuleLoader::load(const QString &file)
{
    QLibrary library(file);
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!library.load()) {
        const QString reason = library.errorString();
        const bool isOfAnotherVersion = reason.contains(QLatin1String("undefined symbol"));
        return Failure{isOfAnotherVersion
                           ? reason + QStringLiteral("; build the module again with this version "
                                                     "of Tavo")
                           : reason};
    }
    const QFunctionPointer entry = library.resolve("worker_create");
    if (entry == nullptr) {
        return Failure{QStringLiteral("%1 exports no worker_create").arg(file)};
    }
    return reinterpret_cast<WorkerCreate>(entry);
}

QVector<FoundModule> ModuleLoader::list() const
{
    QMap<QString, FoundModule> found;
    for (const QString &folder : m_searchPath) {
        const auto files = QDir(folder).entryInfoList(
            {libraryPrefix + QLatin1Char('*') + librarySuffix}, QDir::Files, QDir::Name);
        for (const QFileInfo &info : files) {
            const QString name = info.fileName().mid(libraryPrefix.size(),
                                                     info.fileName().size() - libraryPrefix.size() -
                                                         librarySuffix.size());
            if (!found.contains(name)) {
                found.insert(name, {name, info.absoluteFilePath(), std::nullopt});
            }
        }
    }
    for (FoundModule &module : found) {
        const auto loaded = load(module.file);
        if (const auto *failure = std::get_if<Failure>(&loaded)) {
            module.error = failure->reason;
        }
    }
    return found.values().toVector();
}
