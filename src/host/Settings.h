// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/CommandLine.h"
#include "host/ExitCode.h"
#include "host/Host.h"
#include "host/HostConfiguration.h"

#include <vector>

/// The configuration with what the environment and the command line have to say about it: the
/// command line comes first, then the file, then the environment for folders; and the other way
/// round for log levels, where the last one to speak wins: file, environment, command line.
class Settings
{
public:
    static Result<Settings, ExitFailure> read(const CommandLine &line);

    const QString &source() const { return m_configuration.source; }
    const LogConfiguration &log() const { return m_configuration.log; }
    const SimplePlayerLimits &sounds() const { return m_configuration.sounds; }

    /// Where modules are looked for, in this order.
    const QStringList &searchPath() const { return m_configuration.modulePath; }

    /// The file of each module; none of them is loaded.
    Result<std::vector<LocatedModule>> locateModules() const;

private:
    HostConfiguration m_configuration;
};
