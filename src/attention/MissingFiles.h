// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/AttentionSettings.h"

/// Why the program can't be started, such as "there is no program espeak-ng"; empty if nothing is known
/// against it.
QString missingProgram(const QString &program);

/// What the settings name but this device does not have: programs that speak, and files of sounds. Each as
/// "FILE:LINE: KEY: REASON". The settings are those that the JSON of the file holds.
QStringList missingFiles(const AttentionSettings &settings, const QByteArray &json,
                         const QString &file);
