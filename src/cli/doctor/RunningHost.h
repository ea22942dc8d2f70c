// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/doctor/Finding.h"

#include <QByteArray>
#include <QDateTime>

#include <optional>

/// Whether a host of this version is older than this program, which is installed with it.
bool isOutdated(const QString &hostVersion);
QString outdatedText(const QString &hostVersion);

/// When the configuration file, one of its fragments or their folder was last changed.
QDateTime changeOfConfiguration(const QString &file);

/// Compares the configuration with the one that the running service has, by the output of systemctl show. Nothing if
/// the service does not run, or if they are the same.
std::optional<Finding> lookAtService(const QByteArray &properties, const QString &file);

/// What lookAtService() needs from systemctl show.
QString serviceProperties();
