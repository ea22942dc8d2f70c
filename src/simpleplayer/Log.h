// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

/// The logger of all players.
inline log4cplus::Logger simplePlayerLogger()
{
    return log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("SimplePlayer"));
}
