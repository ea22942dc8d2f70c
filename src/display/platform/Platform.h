// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "display/DisplayConfiguration.h"

#include <QString>

/// Chooses the platform that Qt is going to use, and sets the variables that Qt reads at its start. To be
/// called before there is an application. Returns a name of what messages are shown on; fails if there is
/// no display. A platform in QT_QPA_PLATFORM is used as it is.
Result<QString> choosePlatform(DisplayConfiguration::Renderer renderer);
