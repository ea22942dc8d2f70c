// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/CommandLine.h"
#include "host/ExitCode.h"
#include "host/Host.h"
#include "host/HostConfiguration.h"

#include <vector>

/// The configuration, combined with the environment and the command line. Folders are searched in
/// the order command line, file, environment; log levels are applied in the order file, environment,
/// command line, so that later ones override earlier ones.
class Settings
{
public:
    static Result<Settings, ExitFailure> read(const CommandLine &line);

    const QString &source() const { return m_configuration.source; }
    const QVector<ModuleEntry> &modules() const { return m_configuration.modules; }
    const LogConfiguration &log() const { return m_configuration.log; }
    const SimplePlayerLimits &sounds() const { return m_configuration.sounds; }

    /// The folders to search for modules, in this order.
    const QStringList &searchPath() const { return m_configuration.modulePath; }

    /// Finds the file of each module, without loading any.
    Result<std::vector<LocatedModule>> locateModules() const;

private:
    HostConfiguration m_configuration;
};
