// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionItem.h"

namespace {
template <typename T>
const T *as(const QVariant &value)
{
    return value.userType() == qMetaTypeId<T>() ? static_cast<const T *>(value.constData())
                                                : nullptr;
}

template <typename T>
void registerRecord(QVariantHash (*toHash)(const T &))
{
    if (!QMetaType::hasRegisteredConverterFunction<T, QVariantHash>()) {
        QMetaType::registerConverter<T, QVariantHash>(toHash);
    }
}
} // namespace

AttentionItem::AttentionItem(const TavoAttentionItem &record)
    : id(record.id())
    , title(record.title())
    , text(record.text())
    , path(record.path())
    , application(record.application())
    , source(record.source())
    , user(record.user())
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
    , givesWay(record.givesWay())
    , isTransient(record.isTransient())
{
}

TavoAttentionItem AttentionItem::record() const
{
    TavoAttentionItem record;
    const auto set = [&record](auto setter, const auto &field) {
        if (!field.isEmpty()) {
            (record.*setter)(field);
        }
    };
    set(&TavoAttentionItem::setId, id);
    set(&TavoAttentionItem::setTitle, title);
    set(&TavoAttentionItem::setText, text);
    set(&TavoAttentionItem::setPath, path);
    set(&TavoAttentionItem::setApplication, application);
    set(&TavoAttentionItem::setSource, source);
    set(&TavoAttentionItem::setUser, user);
    set(&TavoAttentionItem::setIcon, icon);
    set(&TavoAttentionItem::setCategory, category);
    set(&TavoAttentionItem::setGroup, group);
    set(&TavoAttentionItem::setActions, actions);
    set(&TavoAttentionItem::setSound, sound);
    set(&TavoAttentionItem::setSpeech, speech);
    set(&TavoAttentionItem::setLanguage, language);
    record.setPriority(priority).setTimeout(timeout);
    if (soundFollows) {
        record.setSoundFollows(true);
    }
    if (givesWay) {
        record.setGivesWay(true);
    }
    if (isTransient) {
        record.setTransient(true);
    }
    return record;
}

AttentionOutcome::AttentionOutcome(const TavoAttentionOutcome &record)
    : id(record.id())
    , isShown(record.shown())
    , isSounding(record.sounding())
    , reason(record.reason())
    , rules(record.rules())
{
}

TavoAttentionOutcome AttentionOutcome::record() const
{
    return TavoAttentionOutcome()
        .setId(id)
        .setShown(isShown)
        .setSounding(isSounding)
        .setReason(reason)
        .setRules(rules);
}

void registerAttentionTypes()
{
    registerRecord<AttentionItem>([](const AttentionItem &item) {
        return TavoValue().setAttentionItem(item.record()).fields();
    });
    registerRecord<AttentionOutcome>([](const AttentionOutcome &outcome) {
        return TavoValue().setAttentionOutcome(outcome.record()).fields();
    });
}

bool isAttentionItem(const QVariant &value)
{
    return as<AttentionItem>(value) != nullptr;
}

AttentionItem attentionItemIn(const QVariant &value)
{
    const auto *item = as<AttentionItem>(value);
    return item != nullptr ? *item : AttentionItem(TavoValue(value.toHash()).attentionItem());
}

AttentionOutcome attentionOutcomeIn(const QVariant &value)
{
    const auto *outcome = as<AttentionOutcome>(value);
    return outcome != nullptr ? *outcome
                              : AttentionOutcome(TavoValue(value.toHash()).attentionOutcome());
}
