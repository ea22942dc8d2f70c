// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ImageData.h"
#include <core/records/enumerations.h>

#include <QString>
#include <QVector>

#include <optional>

/// A notification as a desktop client wants it shown. Only the markup has markup.
struct DesktopNotification
{
    struct Action
    {
        QString key; ///< by which the client knows it
        QString label;
    };

    QString title;
    QString text;
    QString markup; ///< the text with its emphasis, as in TavoRoles; may be empty
    QVector<Action> actions;
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
    int timeout = 0; ///< ms on display; 0: stays until it is closed
    QString application;
    QString icon;
    std::optional<ImageData> image{}; ///< goes before the source
    QString imageSource;              ///< as in TavoImage
    std::optional<int> progress{};    ///< from 0 to 100
    bool hasActionIcons = false;      ///< the keys of the actions are names of icons
    QString category;
    QString desktopEntry;
    QString user; ///< whose program the client is
    bool isTransient = false;
    bool isResident = false; ///< stays after one of its actions is invoked
};
