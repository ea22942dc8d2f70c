// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

/// A request to notify people. Its fields are those of the record, which would search for each of them every
/// time that it is read.
struct Item
{
    Item() = default;
    Item(const TavoAttentionItem &record)
        : id(record.id())
        , title(record.title())
        , text(record.text())
        , path(record.path())
        , application(record.application())
        , source(record.source())
        , icon(record.icon())
        , category(record.category())
        , group(record.group())
        , priority(record.priority())
        , timeout(record.timeout())
        , actions(record.actions())
        , sound(record.sound())
        , soundFollows(record.soundFollows())
        , speech(record.speech())
        , language(record.language())
        , isTransient(record.isTransient())
    {
    }

    QString id;
    TrString title;
    TrString text;
    CMPath path;
    QString application;
    QString source;
    QString icon;
    QString category;
    QString group;
    TavoNotificationItemPriority::Enum priority{};
    int timeout = 0;
    TavoList<TavoAttentionAction> actions;
    TavoNotificationPlayerItem sound;
    bool soundFollows = false;
    QString speech;
    QString language;
    bool isTransient = false;
};
