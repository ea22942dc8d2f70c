// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

/// Finds icons by name in an icon theme of the desktop, in those that it inherits, in "hicolor", and in
/// the folders for pixmaps. Reads only the files that a look-up needs. Used from any thread.
class IconTheme
{
public:
    /// Looks in "icons" below each of the folders.
    IconTheme(const QString &theme, const QStringList &dataFolders);

    /// The file of an icon for this size in pixels. A smaller icon is used if there is no larger one.
    /// Empty if there is none, and if the name is not that of a file.
    QString find(const QString &name, int size) const;

private:
    const QString m_theme;
    const QStringList m_dataFolders;
};
