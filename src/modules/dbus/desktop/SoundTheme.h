// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

/// Finds the sounds that a sound theme has for events ("message-new-instant"), as the freedesktop
/// sound theme and sound naming specifications lay down, for the output profile "stereo".
///
/// Looks at the disk each time, so a theme that is installed later is found. Thread: any.
class SoundTheme
{
public:
    /// The theme's name; the folders that have themes in them, the first having precedence; and the
    /// locale ("de_DE.UTF-8") whose sounds are preferred.
    SoundTheme(QString name, QStringList folders, const QString &locale);

    /// With the folders and the locale that the environment names.
    explicit SoundTheme(const QString &name);

    /// The path of the sound file for an event; empty for none. An event without a sound of its own
    /// has that of the more general event: "dialog-warning-auth" that of "dialog-warning". A sound
    /// that a theme disables is none.
    QString find(const QString &event) const;

    /// Where the base directories of the environment have sounds.
    static QStringList environmentFolders();

private:
    struct Theme
    {
        QString name;
        QStringList subfolders; ///< those with sounds for the profile
    };

    QVector<Theme> lineage() const;
    QStringList placesOf(const Theme &theme) const;

    const QString m_name;
    const QStringList m_folders;
    const QStringList m_locales; ///< names of subfolders, the most special first, none last
};
