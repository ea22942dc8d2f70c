// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

// Each writes the seeds of some fuzzers to subfolders of the folder.

void writeRequestSeeds(const QString &corpus);
void writeValueSeeds(const QString &corpus);
void writeConfigurationSeeds(const QString &corpus);
void writeSoundSeeds(const QString &corpus);
void writeFleetSeeds(const QString &corpus);
