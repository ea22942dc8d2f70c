// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

// How the bridge and the module for attention hand each other a request and its reply: as they are, because to
// write records and to read them again takes longer than to decide. Everyone else reads these values as the
// records that attention.h describes: QVariant::toHash() converts them.

/// A request to notify people. Its fields are those of the record.
struct AttentionItem
{
    AttentionItem() = default;
    AttentionItem(const TavoAttentionItem &record);

    /// Fields that are empty are left out.
    TavoAttentionItem record() const;

    QString id;
    TrString title;
    TrString text;
    CMPath path;
    QString application;
    QString source;
    QString user;
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
    bool givesWay = false;
    bool isTransient = false;
};

/// What has become of it.
struct AttentionOutcome
{
    AttentionOutcome() = default;
    AttentionOutcome(const TavoAttentionOutcome &record);

    TavoAttentionOutcome record() const;

    QString id;
    bool isShown = false;
    bool isSounding = false;
    QString reason;
    TavoList<QString> rules;
};

Q_DECLARE_METATYPE(AttentionItem)
Q_DECLARE_METATYPE(AttentionOutcome)

/// To be called before the first of them is sent.
void registerAttentionTypes();

bool isAttentionItem(const QVariant &value);

/// Read what is sent, or the record in a TavoValue.
AttentionItem attentionItemIn(const QVariant &value);
AttentionOutcome attentionOutcomeIn(const QVariant &value);
