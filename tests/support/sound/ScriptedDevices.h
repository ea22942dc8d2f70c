// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <vector>

/// Makes the devices of ScriptedPcm.cpp known to ALSA in this process, by their behaviours' names
/// ("plain", "busy", ...), and tells what was heard on them.
///
/// Made once, before ALSA is used: the environment names its configuration.
class ScriptedDevices
{
public:
    static ScriptedDevices &instance();

    /// All bytes that were heard since forget().
    QByteArray heardBytes() const;

    /// The same as the samples that devices take: floats, interleaved.
    std::vector<float> heard() const;

    void forget();

private:
    ScriptedDevices();

    QString heardPath() const { return m_folder.filePath(QStringLiteral("heard")); }

    QTemporaryDir m_folder;
};
