// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/AttentionSettings.h"

#include "attention/GroupFromKey.h"
#include "attention/JsonPosition.h"
#include <base/Printable.h>

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <stdexcept>

namespace {
constexpr int maxRateCount = 100000;
constexpr int maxRateSeconds = 86400;
constexpr int msOfSecond = 1000;

QTimeZone readZone(TavoConfiguration &configuration)
{
    const QString key = QStringLiteral("timeZone");
    const QString name = configuration.string(key, QString());
    if (name.isEmpty()) {
        return QTimeZone::systemTimeZone();
    }
    const QTimeZone zone(name.toUtf8());
    if (!zone.isValid()) {
        configuration.fail(key, QStringLiteral("must be a time zone such as \"Europe/Berlin\""));
    }
    return zone;
}

SourceRates::Limit readRate(TavoConfiguration configuration)
{
    SourceRates::Limit limit;
    limit.count = configuration.integer(QStringLiteral("messages"), limit.count, 1, maxRateCount);
    limit.periodMs =
        msOfSecond * configuration.integer(QStringLiteral("seconds"), limit.periodMs / msOfSecond,
                                           1, maxRateSeconds);
    configuration.finish();
    return limit;
}
} // namespace

AttentionSettings::AttentionSettings()
    : zone(QTimeZone::systemTimeZone())
{
}

QStringList AttentionSettings::defaultFiles()
{
    QStringList files;
    if (QDir::homePath() != QDir::rootPath()) {
        files = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    }
    files.append(QStringLiteral("/etc"));
    for (QString &file : files) {
        file += QLatin1String("/tavo/attention.json");
    }
    return files;
}

QString AttentionSettings::defaultFile()
{
    const QStringList files = defaultFiles();
    const auto found = std::find_if(files.begin(), files.end(),
                                    [](const QString &file) { return QFile::exists(file); });
    return found == files.end() ? files.last() : *found;
}

AttentionSettings AttentionSettings::fromJson(const QByteArray &json, const QString &file)
{
    try {
        return read(TavoConfiguration::fromJson(json, file));
    } catch (const std::runtime_error &error) {
        const QString text = QString::fromStdString(error.what());
        const QString source = printable(file) + QLatin1String(": ");
        if (!text.startsWith(source)) {
            throw; // a syntax error, which names its line already
        }
        const QString rest = text.mid(source.size());
        const int line = lineInJson(json, rest.section(QLatin1String(": "), 0, 0));
        throw std::runtime_error(
            QStringLiteral("%1:%2: %3").arg(printable(file)).arg(line).arg(rest).toStdString());
    }
}

void AttentionSettings::readSpeech(TavoConfiguration configuration)
{
    speechCommand = configuration.stringList(QStringLiteral("command"), {});
    TavoConfiguration languages = configuration.section(QStringLiteral("languages"));
    const QStringList keys = languages.keys();
    for (const QString &key : keys) {
        const QStringList command = languages.stringList(key, {});
        if (command.isEmpty()) {
            languages.fail(key, QStringLiteral("must name a program"));
        }
        speechLanguages.insert(QString(key).toLower().replace(QLatin1Char('_'), QLatin1Char('-')),
                               command);
    }
    configuration.finish();
}

AttentionSettings AttentionSettings::read(TavoConfiguration configuration)
{
    AttentionSettings settings;
    settings.zone = readZone(configuration);
    settings.doNotDisturb = DoNotDisturbSettings::read(
        configuration.section(QStringLiteral("doNotDisturb")), settings.zone);
    settings.rules = Rules::read(configuration, settings.zone);
    settings.rate = readRate(configuration.section(QStringLiteral("eachSource")));
    settings.groupFrom = readGroupFrom(configuration).value_or(settings.groupFrom);
    settings.readSpeech(configuration.section(QStringLiteral("speech")));
    configuration.finish();
    return settings;
}
