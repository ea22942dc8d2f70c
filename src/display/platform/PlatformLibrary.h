// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QString>

/// A function of one of the program's libraries that are loaded on one platform only; null if the library is
/// not installed. The library stays loaded.
template <typename Function>
Function *platformFunction(const char *library, const char *name)
{
    const QString program = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    QLibrary loaded(
        QFileInfo(program).absolutePath() +
        QStringLiteral("/" TAVO_DISPLAY_DIR "/libtavo_display_%1.so").arg(QLatin1String(library)));
    return reinterpret_cast<Function *>(loaded.resolve(name));
}
