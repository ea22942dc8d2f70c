// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundFacts.h"

void SoundFacts::end(int id, TavoNotificationPlayerResponseType::Enum type)
{
    if (ledger.find(id)->responds) {
        owed.push_back({id, type});
    }
    ledger.remove(id);
}

void SoundFacts::cancel(int id)
{
    if (ledger.find(id)->player == SoundItem::Player::None) {
        end(id, TavoNotificationPlayerResponseType::Cancelled);
    } else {
        ledger.moveToStopping(id);
    }
}

void SoundFacts::cancelAll()
{
    while (!ledger.queue().empty()) {
        cancel(ledger.queue().back().id);
    }
}
