// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/CommandLine.h"
#include "host/Host.h"
#include "host/HostLog.h"
#include "host/Settings.h"

#include <QString>
#include <QStringList>

/// Reads the configuration again while the host runs. If it is good, what can change changes, and the
/// keys that need a restart are logged. If anything in it is wrong, nothing changes, and the reason is
/// logged.
///
/// Thread: the main thread. Blocks until each module has taken its configuration.
class Reload
{
public:
    /// @p started is what the host was started with. Log and host must live for as long as this object.
    Reload(CommandLine line, const Settings &started, HostLog &log, Host &host);

    /// Returns what has been logged.
    QString run();

private:
    /// Returns the keys that need a restart.
    Result<QStringList> apply();

    const CommandLine m_line;
    const Settings m_started;
    Settings m_current; ///< the last that was good
    HostLog &m_log;
    Host &m_host;
};
