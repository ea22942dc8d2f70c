// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/MissingFiles.h"

#include "attention/JsonPosition.h"
#include <base/Printable.h>
#include <base/SoundLocation.h>

#include <QFileInfo>
#include <QStandardPaths>

namespace {
/// Why the sound can't be played; empty if nothing is known against it.
QString missingSound(const QString &name)
{
    const Result<SoundLocation> location = parseSoundLocation(name);
    if (const auto *failure = std::get_if<Failure>(&location)) {
        return QStringLiteral("\"%1\" %2").arg(name, failure->reason);
    }
    const QString path = std::get<SoundLocation>(location).path;
    if (path.isEmpty()) {
        return {}; // on a server
    }
    // The host runs in another folder.
    if (QFileInfo(path).isRelative()) {
        return QStringLiteral("must be a path from / on, or a URI");
    }
    return QFileInfo::exists(path) ? QString() : QStringLiteral("there is no file %1").arg(path);
}
} // namespace

QString missingProgram(const QString &program)
{
    // Without a slash, it is looked for in PATH.
    const QFileInfo file(program);
    const bool isThere = program.contains(QLatin1Char('/'))
                             ? file.isFile() && file.isExecutable()
                             : !QStandardPaths::findExecutable(program).isEmpty();
    return isThere ? QString() : QStringLiteral("there is no program %1").arg(program);
}

QStringList missingFiles(const AttentionSettings &settings, const QByteArray &json,
                         const QString &file)
{
    QStringList missing;
    const auto add = [&](const QString &key, const QString &reason) {
        if (!reason.isEmpty()) {
            missing.append(QStringLiteral("%1:%2: %3: %4")
                               .arg(printable(file))
                               .arg(lineInJson(json, key))
                               .arg(key, printable(reason)));
        }
    };
    const auto addProgram = [&add](const QString &key, const QStringList &command) {
        if (!command.isEmpty()) {
            add(key, missingProgram(command.first()));
        }
    };
    const auto addSound = [&add](const QString &key, const std::optional<QString> &sound) {
        if (sound) {
            add(key, missingSound(*sound));
        }
    };
    addProgram(QStringLiteral("speech.command"), settings.speechCommand);
    for (auto each = settings.speechLanguages.begin(); each != settings.speechLanguages.end();
         ++each) {
        addProgram(QStringLiteral("speech.languages.") + each.key(), each.value());
    }
    for (std::size_t index = 0; index < settings.rules.list().size(); ++index) {
        const Treatment &treatment = settings.rules.list()[index].treatment();
        const QString then = QStringLiteral("rules[%1].then.").arg(index);
        addSound(then + QStringLiteral("sound"), treatment.sound);
        addSound(then + QStringLiteral("chime"), treatment.chime);
    }
    return missing;
}
