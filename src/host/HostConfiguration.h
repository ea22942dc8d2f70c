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
    /// What the worker is called: handed to worker_create, and its thread's name.
    QString name;
    /// The <name> in libtavo_<name>.so, or the path of a file when it holds a slash.
    QString libraryName;
    /// Handed to worker_create as it is.
    QVariantHash config;
};

/// Where log records go and which of them.
struct LogConfiguration
{
    /// A log4cplus properties file; empty for the console.
    QString file;
    /// Applied in this order, after the file's own.
    QVector<LogLevel> levels;
};

/// What the host is to run.
struct HostConfiguration
{
    /// The file, or "built-in configuration"; for messages.
    QString source;
    QVector<ModuleEntry> modules;
    /// Folders to look for modules in.
    QStringList modulePath;
    LogConfiguration log;
    /// What the players of all modules accept.
    SimplePlayerLimits sounds;

    /// What the host runs when it is given no file.
    static HostConfiguration builtIn();

    /// Throws a std::runtime_error that begins with the name of the file.
    static HostConfiguration fromFile(const QString &file);

    /// The same for JSON that was read from @p file, which is not opened.
    static HostConfiguration fromJson(const QByteArray &json, const QString &file);
};
