// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "QuietMemory.h"

#include <core/tavo.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

constexpr int maxFileSize = 1 << 20;

const QString choiceKey = QStringLiteral("choice");
const QString onKey = QStringLiteral("on");
const QString untilKey = QStringLiteral("until");
const QString missedKey = QStringLiteral("missed");

constexpr auto ownersOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
} // namespace

QuietMemory QuietMemory::read(const QString &file)
{
    QuietMemory memory;
    QFile opened(file);
    if (file.isEmpty() || !QFileInfo(file).isFile() || !opened.open(QIODevice::ReadOnly)) {
        return memory;
    }
    const QJsonObject json = QJsonDocument::fromJson(opened.read(maxFileSize)).object();
    const QJsonObject choice = json.value(choiceKey).toObject();
    if (choice.value(onKey).isBool()) {
        memory.choice = {choice.value(onKey).toBool(),
                         qint64(choice.value(untilKey).toVariant().toLongLong())};
    }
    const QJsonObject missed = json.value(missedKey).toObject();
    for (auto each = missed.begin(); each != missed.end(); ++each) {
        if (each->toInt() > 0) {
            memory.missed.insert(each.key(), each->toInt());
        }
    }
    return memory;
}

void QuietMemory::write(const QString &file) const
{
    if (file.isEmpty()) {
        return;
    }
    if (!choice && missed.isEmpty()) {
        QFile::remove(file);
        return;
    }
    QJsonObject json;
    if (choice) {
        json.insert(choiceKey,
                    QJsonObject{{onKey, choice->isOn}, {untilKey, double(choice->until)}});
    }
    QJsonObject counts;
    for (auto each = missed.begin(); each != missed.end(); ++each) {
        counts.insert(each.key(), each.value());
    }
    json.insert(missedKey, counts);
    const QString folder = QFileInfo(file).absolutePath();
    if (!QFileInfo::exists(folder) && QDir().mkpath(folder)) {
        QFile::setPermissions(folder, ownersOnly | QFileDevice::ExeOwner);
    }
    QSaveFile opened(file);
    if (!opened.open(QIODevice::WriteOnly) || !opened.setPermissions(ownersOnly) ||
        opened.write(QJsonDocument(json).toJson()) < 0 || !opened.commit()) {
        LOG4CPLUS_WARN(logger, file << " can't be written: " << opened.errorString()
                                    << "; do-not-disturb is forgotten when the host ends");
    }
}
