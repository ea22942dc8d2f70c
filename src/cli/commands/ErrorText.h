// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/ExitCode.h"
#include <core/model/cmerror.h>
#include <core/records/cmpath.h>

#include <QString>

/// The exit code for an error.
ExitCode exitCodeOf(const CMError &error);

/// What happened and what to do about it, in one or two sentences.
QString errorText(const CMError &error, const CMPath &path, const QString &bus);
