// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/doctor/Finding.h"

#include <QByteArray>
#include <QVector>

/// What tavo-host --list-modules says about the module libraries that are installed: a line each,
/// of name, file and, where it can't be loaded, the error.
QVector<Finding> lookAtModules(const QByteArray &list);

/// The program: beside this one, or on the path; empty when there is none.
QString hostProgram();
