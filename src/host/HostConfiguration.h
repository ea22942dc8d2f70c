// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/LogLevels.h"

#include <QByteArray>
#include <QStringList>
#include <QVariantHash>
#include <QVector>

#include <variant>

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

/// What is wrong with a configuration, and where.
struct ConfigurationError
{
    QString file;
    /// The place within the file: a key such as "modules[1].name", "LINE:COLUMN" for text that is
    /// not JSON, or empty where the whole file is meant.
    QString key;
    QString reason;

    /// "FILE: KEY: reason", and "FILE:LINE:COLUMN: reason" for text that is not JSON.
    QString text() const;
    bool isSyntaxError = false;
};

/// What the host is to run. A value: reading one has no effect on anything else.
struct HostConfiguration
{
    using Result = std::variant<HostConfiguration, ConfigurationError>;

    /// What messages call the configuration: the file, or "built-in configuration".
    QString source;
    QVector<ModuleEntry> modules;
    /// Folders to look for modules in.
    QStringList modulePath;
    LogConfiguration log;

    /// What a device runs when nobody says otherwise.
    static HostConfiguration builtIn();

    static Result fromFile(const QString &file);

    /// Relative paths in the text are taken from the folder of @p file, which is not opened.
    static Result fromJson(const QByteArray &json, const QString &file);
};
