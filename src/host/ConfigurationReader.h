// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/HostConfiguration.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <initializer_list>
#include <optional>

/// Turns a JSON object into a configuration, once. Reading goes on after a mistake, and the first
/// one is kept: each step below then needs no result of its own.
class ConfigurationReader
{
public:
    explicit ConfigurationReader(const QString &file);

    HostConfiguration::Result read(const QJsonObject &object);

private:
    void readModules(const QJsonArray &modules);
    ModuleEntry readModule(const QJsonValue &value, const QString &key);
    void refuseDuplicateName(const QString &name, const QString &key);
    void readModulePath(const QJsonArray &folders);
    void readLog(const QJsonObject &log);
    void readLevel(const QString &logger, const QJsonValue &value, const QString &key);

    QString readModuleName(const QJsonValue &value, const QString &key);
    QString readLibrary(const QJsonValue &value, const QString &key);
    QString readPath(const QJsonValue &value, const QString &key);
    QString readText(const QJsonValue &value, const QString &key);
    QJsonObject readObject(const QJsonValue &value, const QString &key);
    QJsonArray readArray(const QJsonValue &value, const QString &key);

    void refuseUnknownKeys(const QJsonObject &object, const QString &prefix,
                           std::initializer_list<const char *> known);
    QString absolutePath(const QString &path) const;
    void fail(const QString &key, const QString &reason);

    QString m_file;
    HostConfiguration m_configuration;
    std::optional<ConfigurationError> m_error;
};
