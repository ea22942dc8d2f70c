// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionConfiguration.h"

#include "history/History.h"
#include <core/base/configuration.h>

#include <attention/AttentionSettings.h>

namespace {
constexpr int maxEntries = 10000000;
constexpr int maxDays = 36500;
constexpr int maxMebibytes = 1 << 20;
constexpr int defaultMebibytes = 32;
constexpr int maxSpeechTimeoutMs = 600000;
constexpr int maxKeptSounds = 100000;

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

Speech::Settings readSpeech(TavoConfiguration configuration)
{
    Speech::Settings settings;
    settings.command = configuration.stringList(QStringLiteral("command"), {});
    settings.folder = configuration.string(QStringLiteral("folder"), Speech::defaultFolder());
    settings.timeoutMs = configuration.integer(QStringLiteral("timeout"), settings.timeoutMs, 100,
                                               maxSpeechTimeoutMs);
    settings.maxSounds =
        configuration.integer(QStringLiteral("sounds"), settings.maxSounds, 1, maxKeptSounds);
    configuration.finish();
    return settings;
}
} // namespace

AttentionConfiguration::AttentionConfiguration(const QVariantHash &config)
{
    TavoConfiguration configuration(config);
    const QString settings = configuration.string(QStringLiteral("settings"), QString());
    settingsFiles = settings.isEmpty() ? AttentionSettings::defaultFiles() : QStringList{settings};
    history = readHistory(configuration.section(QStringLiteral("history")));
    quietFile =
        history.file.isEmpty() ? QString() : history.file + QLatin1String("-do-not-disturb.json");
    speech = readSpeech(configuration.section(QStringLiteral("speech")));
    configuration.finish();
}
