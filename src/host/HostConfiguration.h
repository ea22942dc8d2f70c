// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/LogLevels.h"
#include "simpleplayer/SimplePlayerLimits.h"

#include <QByteArray>
#include <QStringList>
#include <QVariantHash>
#include <QVector>

/// One worker to run.
struct ModuleEntry
{
    /// The name of the worker, passed to worker_create, and of its thread.
    QString name;
    /// The NAME of libtavo_NAME.so; or, if it has a slash, the path of a file.
    QString libraryName;
    /// Passed to worker_create unchecked.
    QVariantHash config;
    /// Where the module is configured, such as "host.json: modules[2]"; for messages.
    QString origin = {};
};

struct LogConfiguration
{
    /// A log4cplus properties file; empty for the console.
    QString file;
    /// The configuration file that names it; for messages.
    QString origin;
    /// Applied in this order, after those of the file.
    QVector<LogLevel> levels;
};

struct HostConfiguration
{
    /// The file, or "built-in configuration"; for messages.
    QString source;
    QVector<ModuleEntry> modules;
    /// Folders to search for modules.
    QStringList modulePath;
    LogConfiguration log;
    /// The limits of the players of all modules.
    SimplePlayerLimits sounds;

    /// The configuration of a host that is started without a file.
    static HostConfiguration builtIn();

    /// Reads the file, and then the fragments: the files FILE.d/*.json, sorted by name. Each fragment adds to
    /// what was read before it, and replaces single values. Throws a std::runtime_error that begins with the
    /// name of the file or of the fragment.
    static HostConfiguration fromFile(const QString &file);

    /// The same for JSON that has been read from @p file, without fragments. Opens no file.
    static HostConfiguration fromJson(const QByteArray &json, const QString &file);
};
