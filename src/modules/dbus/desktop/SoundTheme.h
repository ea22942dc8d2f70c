// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

/// Finds the sounds of a sound theme by the names of events, such as "message-new-instant", for the
/// output profile "stereo". Follows the freedesktop specifications for sound themes and their names.
///
/// Reads from disk each time, so a theme that is installed later is found. Used from any thread.
class SoundTheme
{
public:
    /// The folders hold themes; the first that has a sound wins. Sounds for the locale, such as
    /// "de_DE.UTF-8", are preferred.
    SoundTheme(QString name, QStringList folders, const QString &locale);

    /// Takes folders and locale from the environment.
    explicit SoundTheme(const QString &name);

    /// The path of an event's sound file, or an empty string. An event that has no sound uses the
    /// sound of the more general event: "dialog-warning-auth" uses "dialog-warning". Also empty if
    /// the theme disables the sound. At most eight names are tried.
    QString find(const QString &event) const;

    /// The folders of sounds in the base directories of the environment.
    static QStringList environmentFolders();

private:
    struct Theme
    {
        QString name;
        QStringList subfolders; ///< with sounds for the profile
    };

    QVector<Theme> lineage() const;
    QStringList placesOf(const Theme &theme) const;

    QString m_name;
    QStringList m_folders;
    QStringList m_locales; ///< names of subfolders, the most specific first, an empty one last
};
