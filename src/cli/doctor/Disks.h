// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/doctor/Finding.h"

#include <QVector>

/// Finds the disks that are full, of those that logs, sounds and sockets are kept on.
QVector<Finding> lookAtDisks();
