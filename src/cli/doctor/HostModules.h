// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/doctor/Finding.h"

#include <QByteArray>
#include <QVector>

/// Checks the installed modules, by the output of tavo-host --list-modules.
QVector<Finding> lookAtModules(const QByteArray &list);

/// The path of another program, beside this one or on PATH; empty when there is none.
QString programBeside(const QString &name);
