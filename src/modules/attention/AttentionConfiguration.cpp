// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionConfiguration.h"

#include "history/History.h"
#include <core/base/configuration.h>

#include <QStandardPaths>

namespace {
constexpr int maxEntries = 10000000;
constexpr int maxDays = 36500;
constexpr int maxMebibytes = 1 << 20;
constexpr int defaultMebibytes = 32;

/// A person's own file, or else the system's.
QString defaultSettingsFile()
{
    const QString name = QStringLiteral("tavo/attention.json");
    const QString found = QStandardPaths::locate(QStandardPaths::GenericConfigLocation, name);
    return found.isEmpty() ? QStringLiteral("/etc/") + name : found;
}

HistorySettings readHistory(TavoConfiguration configuration)
{
    HistorySettings settings;
    settings.file = configuration.string(QStringLiteral("file"), History::defaultFile());
    settings.maxEntries =
        configuration.integer(QStringLiteral("entries"), settings.maxEntries, 1, maxEntries);
    settings.maxDays = configuration.integer(QStringLiteral("days"), settings.maxDays, 1, maxDays);
    settings.maxBytes = qint64(configuration.integer(QStringLiteral("megabytes"), defaultMebibytes,
                                                     1, maxMebibytes))
                        << 20;
    configuration.finish();
    return settings;
}
} // namespace

AttentionConfiguration::AttentionConfiguration(const QVariantHash &config)
{
    TavoConfiguration configuration(config);
    settingsFile = configuration.string(QStringLiteral("settings"), defaultSettingsFile());
    history = readHistory(configuration.section(QStringLiteral("history")));
    configuration.finish();
}
