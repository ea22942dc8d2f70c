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

/// Says why the service has failed, by the output of systemctl show. If it runs, compares the device's configuration
/// with the one that the service has. Nothing if they are the same, or if the service was stopped. The service of a
/// session has no file: only its unit knows its configuration.
std::optional<Finding> lookAtService(const QByteArray &properties, const QString &file);

/// A service of a device beside its host.
struct OtherService
{
    const char *name;
    const char *subject;
    const char *purpose;
};
inline constexpr OtherService displayService{"tavo-display", "screen", "shows the messages"};
inline constexpr OtherService fleetService{"tavo-fleet", "fleet", "runs"};

/// The same for such a service. Nothing if it was stopped.
std::optional<Finding> lookAtOtherService(const OtherService &service,
                                          const QByteArray &properties);

/// What these functions need from systemctl show.
QString serviceProperties();
