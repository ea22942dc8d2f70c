// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/platform/FocusKey.h"

#include "display/platform/PlatformLibrary.h"

#include <QGuiApplication>

std::unique_ptr<FocusKey> FocusKey::create()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        return nullptr;
    }
    auto *make = platformFunction<FocusKey *()>("x11", "tavoDisplayMakeFocusKey");
    return std::unique_ptr<FocusKey>(make == nullptr ? nullptr : make());
}
