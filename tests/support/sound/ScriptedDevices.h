// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <vector>

/// Defines the devices of ScriptedPcm.cpp for ALSA in this process, named by their behaviours
/// ("plain", "busy", ...), and returns what was heard on them.
///
/// Create it before ALSA is used, since an environment variable names its configuration.
class ScriptedDevices
{
public:
    static ScriptedDevices &instance();

    /// All bytes that were heard since forget().
    QByteArray heardBytes() const;

    /// The same as samples: floats, interleaved.
    std::vector<float> heard() const;

    void forget();

private:
    ScriptedDevices();

    QString heardPath() const { return m_folder.filePath(QStringLiteral("heard")); }

    QTemporaryDir m_folder;
};
