// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/StateFolder.h"

#include <QDir>

QString stateFolder()
{
    const QString service = qEnvironmentVariable("STATE_DIRECTORY").section(QLatin1Char(':'), 0, 0);
    if (!service.isEmpty()) {
        return service;
    }
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!state.startsWith(QLatin1Char('/'))) {
        state = QDir::homePath() + QLatin1String("/.local/state");
    }
    return state + QLatin1String("/tavo");
}
