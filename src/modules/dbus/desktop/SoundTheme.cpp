// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTheme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QVector>

#include <optional>

namespace {
/// How many names are tried for an event, from the full one to more general ones. Each name is
/// looked up in many places, and a client's name may have a hundred parts. The theme's names have
/// at most four.
constexpr int maxNames = 8;

const QString profile = QStringLiteral("stereo");
/// The theme from which all others inherit.
const QString commonTheme = QStringLiteral("freedesktop");

/// The groups of a theme's description, each with its keys and values.
using Description = QHash<QString, QHash<QString, QString>>;

Description parse(const QByteArray &text)
{
    Description groups;
    QString group;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray &bytes : lines) {
        const QString line = QString::fromUtf8(bytes).trimmed();
        if (line.startsWith('[') && line.endsWith(']')) {
            group = line.mid(1, line.size() - 2);
        } else if (const int equals = line.indexOf('='); equals > 0 && !line.startsWith('#')) {
            groups[group].insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return groups;
}

/// Whether the name, which may come from a client, names something in the folder itself.
bool isFileName(const QString &name)
{
    constexpr int maxSize = 200;
    return !name.isEmpty() && name.size() <= maxSize && !name.startsWith('.') &&
           !name.contains('/') && !name.contains(QChar::Null);
}

/// The elements of a comma-separated list that can be names of folders.
QStringList folderNames(const QString &list)
{
    QStringList names;
    const QStringList parts = list.split(',');
    for (const QString &part : parts) {
        if (isFileName(part.trimmed())) {
            names.append(part.trimmed());
        }
    }
    return names;
}

Description describe(const QString &theme, const QStringList &folders)
{
    constexpr qint64 maxBytes = 65536;
    for (const QString &folder : folders) {
        QFile file(folder + '/' + theme + QStringLiteral("/index.theme"));
        if (QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly)) {
            return parse(file.read(maxBytes));
        }
    }
    return {};
}

QStringList localesFor(const QString &locale)
{
    // language_COUNTRY.encoding@modifier
    const QString bare = locale.section('@', 0, 0).section('.', 0, 0);
    QStringList locales;
    const QStringList names{locale, bare, bare.section('_', 0, 0), QStringLiteral("C")};
    for (const QString &name : names) {
        if (isFileName(name) && !locales.contains(name)) {
            locales.append(name);
        }
    }
    locales.append(QString());
    return locales;
}

/// The file for an event in one folder: nothing where the folder has none, an empty string where the
/// folder disables the sound.
std::optional<QString> fileIn(const QString &folder, const QString &event)
{
    const QString stem = folder + '/' + event + '.';
    if (QFileInfo::exists(stem + QStringLiteral("disabled"))) {
        return QString();
    }
    for (const char *extension : {"oga", "ogg", "wav"}) {
        QString file = stem + QString::fromLatin1(extension);
        if (QFileInfo(file).isFile()) {
            return file;
        }
    }
    return std::nullopt;
}

std::optional<QString> fileInFirst(const QStringList &folders, const QString &event)
{
    for (const QString &folder : folders) {
        if (auto file = fileIn(folder, event)) {
            return file;
        }
    }
    return std::nullopt;
}

QString environmentLocale()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        QString locale = qEnvironmentVariable(variable);
        if (!locale.isEmpty()) {
            return locale;
        }
    }
    return {};
}
} // namespace

SoundTheme::SoundTheme(QString name, QStringList folders, const QString &locale)
    : m_name(std::move(name))
    , m_folders(std::move(folders))
    , m_locales(localesFor(locale))
{
}

SoundTheme::SoundTheme(const QString &name)
    : SoundTheme(name, environmentFolders(), environmentLocale())
{
}

QString SoundTheme::find(const QString &event) const
{
    if (!isFileName(event)) {
        return {};
    }
    const QVector<Theme> themes = lineage();
    QStringList places;
    for (const Theme &theme : themes) {
        places.append(placesOf(theme));
    }
    // Sounds without a theme are in the folders themselves.
    places.append(m_folders);
    QString name = event;
    for (int tried = 0; tried < maxNames && !name.isEmpty(); ++tried) {
        if (const auto file = fileInFirst(places, name)) {
            return *file;
        }
        name.truncate(qMax(0, name.lastIndexOf('-')));
    }
    return {};
}

QVector<SoundTheme::Theme> SoundTheme::lineage() const
{
    constexpr int maxThemes = 16;
    QVector<Theme> themes;
    QStringList names;
    const auto add = [&](const QString &name, const auto &self) -> void {
        if (!isFileName(name) || names.contains(name) || names.size() == maxThemes) {
            return;
        }
        names.append(name);
        const Description groups = describe(name, m_folders);
        const auto theme = groups.value(QStringLiteral("Sound Theme"));
        Theme described{name, {}};
        const QStringList subfolders = folderNames(theme.value(QStringLiteral("Directories")));
        for (const QString &subfolder : subfolders) {
            // A subfolder without a profile is for this one.
            if (groups[subfolder].value(QStringLiteral("OutputProfile"), profile) == profile) {
                described.subfolders.append(subfolder);
            }
        }
        themes.append(described);
        const QStringList parents = folderNames(theme.value(QStringLiteral("Inherits")));
        for (const QString &parent : parents) {
            self(parent, self);
        }
    };
    add(m_name, add);
    add(commonTheme, add);
    return themes;
}

QStringList SoundTheme::placesOf(const Theme &theme) const
{
    QStringList places;
    for (const QString &locale : m_locales) {
        for (const QString &subfolder : theme.subfolders) {
            for (const QString &folder : m_folders) {
                QString place = folder + '/' + theme.name + '/' + subfolder;
                places.append(locale.isEmpty() ? place : place + '/' + locale);
            }
        }
    }
    return places;
}

QStringList SoundTheme::environmentFolders()
{
    const auto orDefault = [](const char *variable, const QString &fallback) {
        const QString value = qEnvironmentVariable(variable);
        return value.isEmpty() ? fallback : value;
    };
    const QStringList bases =
        QStringList(
            orDefault("XDG_DATA_HOME", QDir::homePath() + QStringLiteral("/.local/share"))) +
        orDefault("XDG_DATA_DIRS", QStringLiteral("/usr/local/share:/usr/share")).split(':');
    QStringList folders;
    for (const QString &base : bases) {
        // The base directory specification says to ignore relative paths.
        if (QDir::isAbsolutePath(base)) {
            folders.append(QDir::cleanPath(base + QStringLiteral("/sounds")));
        }
    }
    return folders;
}
