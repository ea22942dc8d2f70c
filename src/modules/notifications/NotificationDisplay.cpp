// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationDisplay.h"

NotificationDisplay::NotificationDisplay(CMNodes * /*nodes*/, QObject *parent)
    : QObject(parent)
{
}

bool NotificationDisplay::enqueue(TavoNotificationDisplayItem * /*item*/)
{
    return false;
}

bool NotificationDisplay::cancel(const CMPath & /*path*/)
{
    return false;
}
