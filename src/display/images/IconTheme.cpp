// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/images/IconTheme.h"

#include <QFileInfo>
#include <QSettings>
#include <QVector>

#include <algorithm>

namespace {
constexpr int maxThemes = 16;
constexpr int maxFolders = 512;
constexpr int maxNameLength = 128;

/// A folder of a theme, which holds icons of one size or for a range of sizes.
struct Folder
{
    QString path;
    int minSize = 0;
    int maxSize = 0;

    /// How well its icons fit; 0 is best. To enlarge is worse than to reduce.
    int distance(int wanted) const
    {
        constexpr int enlargingCost = 10;
        return wanted < minSize ? minSize - wanted : qMax(0, wanted - maxSize) * enlargingCost;
    }
};

/// A theme in one of the folders that may have a part of it.
struct ThemePart
{
    QStringList parents;
    QVector<Folder> folders;
};

bool isFileName(const QString &name)
{
    return !name.isEmpty() && name.size() <= maxNameLength && !name.contains(QLatin1Char('/')) &&
           !name.startsWith(QLatin1Char('.')) && !name.contains(QChar(0));
}

ThemePart readTheme(const QString &path)
{
    ThemePart part;
    const QString index = path + QStringLiteral("/index.theme");
    if (!QFileInfo(index).isFile()) {
        return part;
    }
    const QSettings settings(index, QSettings::IniFormat);
    const auto list = [&](const char *key) {
        return settings.value(QStringLiteral("Icon Theme/") + QLatin1String(key)).toStringList();
    };
    part.parents = list("Inherits");
    for (const QString &name : list("Directories").mid(0, maxFolders)) {
        const auto number = [&](const char *key, int missing) {
            return settings.value(name + QLatin1Char('/') + QLatin1String(key), missing).toInt();
        };
        const int size = number("Size", 0);
        const bool isScalable =
            settings.value(name + QStringLiteral("/Type")) == QVariant(QStringLiteral("Scalable"));
        if (number("Scale", 1) == 1) {
            part.folders.append({path + QLatin1Char('/') + name,
                                 isScalable ? number("MinSize", size) : size,
                                 isScalable ? number("MaxSize", size) : size});
        }
    }
    return part;
}

QString existingFile(const QString &folder, const QString &name)
{
    for (const char *extension : {".png", ".svg", ".xpm"}) {
        QString file = folder + QLatin1Char('/') + name + QLatin1String(extension);
        if (QFileInfo(file).isFile()) {
            return file;
        }
    }
    return {};
}

QString findIn(ThemePart &theme, const QString &name, int size)
{
    std::stable_sort(theme.folders.begin(), theme.folders.end(),
                     [size](const Folder &left, const Folder &right) {
                         return left.distance(size) < right.distance(size);
                     });
    for (const Folder &folder : qAsConst(theme.folders)) {
        QString file = existingFile(folder.path, name);
        if (!file.isEmpty()) {
            return file;
        }
    }
    return {};
}
} // namespace

IconTheme::IconTheme(const QString &theme, const QStringList &dataFolders)
    : m_theme(theme)
    , m_dataFolders(dataFolders)
{
}

QString IconTheme::find(const QString &name, int size) const
{
    if (!isFileName(name)) {
        return {};
    }
    const auto hicolor = QStringLiteral("hicolor");
    QStringList themes{m_theme};
    for (int i = 0; i < themes.size() && i < maxThemes; ++i) {
        for (const QString &data : m_dataFolders) {
            ThemePart theme = readTheme(data + QStringLiteral("/icons/") + themes[i]);
            QString file = findIn(theme, name, size);
            if (!file.isEmpty()) {
                return file;
            }
            themes += theme.parents;
        }
        themes.removeDuplicates();
        if (i + 1 == themes.size() && !themes.contains(hicolor)) {
            themes.append(hicolor);
        }
    }
    for (const QString &data : m_dataFolders) {
        QString file = existingFile(data + QStringLiteral("/pixmaps"), name);
        if (!file.isEmpty()) {
            return file;
        }
    }
    return {};
}
