// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The checks, and the bytes by which states are compared.

#include "explorer/sound/SoundSystem.h"

#include <algorithm>

namespace {
using Player = SoundItem::Player;
using Request = SoundFacts::Request;

bool saysIsPlaying()
{
    return TavoValue(CMRoot()->getValue(TavoNotificationPlayerIsPlayingPath()).toHash()).bool_();
}

bool isSame(const std::vector<SoundMembers::Item> &members, const std::vector<SoundItem> &ledger)
{
    return std::equal(members.begin(), members.end(), ledger.begin(), ledger.end(),
                      [](const SoundMembers::Item &member, const SoundItem &item) {
                          return member.id == item.id && member.priority == item.priority &&
                                 member.hasPlayer == (item.player != Player::None);
                      });
}

char bytesOf(const SoundItem &item)
{
    return char(item.priority | (item.valid ? 4 : 0) | (item.responds ? 8 : 0) |
                (item.started ? 16 : 0) | int(item.player) << 5);
}

/// Only what a stopping item does at its end matters; the order of stopping items does not.
char bytesOfStopping(const SoundItem &item, bool active)
{
    return char((item.responds ? 1 : 0) | (item.started ? 2 : 0) | (item.sounding ? 4 : 0) |
                (item.overtaken ? 8 : 0) | (active ? 16 : 0) |
                (item.player == Player::Stopping ? 0 : 64));
}
} // namespace

std::string SoundSystem::state()
{
    const SoundMembers members = SoundMembers::of(*m_worker);
    const SoundLedger &ledger = m_facts.ledger;
    std::string bytes;
    bytes += char((members.audioDucked ? 1 : 0) | (members.audioResource ? 2 : 0) |
                  (members.resourceRequestPending ? 4 : 0) | (members.activeRequest ? 8 : 0) |
                  (members.continuing ? 16 : 0) | (saysIsPlaying() ? 32 : 0) |
                  (m_facts.isPlaying ? 64 : 0));
    bytes +=
        char(int(m_facts.outstanding) | (m_facts.duckAsked ? 4 : 0) | (m_facts.ducked ? 8 : 0) |
             (m_facts.granted ? 16 : 0) | (m_facts.refused ? 32 : 0));
    bytes += char(members.timerRemains);
    const int active = members.positionOfActive();
    // Without names: an active item in the queue is identified by its position, a stopping one by
    // its mark below.
    bytes += char(std::min(active, int(ledger.queue().size())));
    bytes += char(ledger.queue().size());
    for (const SoundItem &item : ledger.queue()) {
        bytes += bytesOf(item);
    }
    std::string stopping;
    for (const SoundItem &item : ledger.stopping()) {
        stopping += bytesOfStopping(item, item.id == members.activeId);
    }
    std::sort(stopping.begin(), stopping.end());
    return bytes + stopping;
}

void SoundSystem::check()
{
    checkResponses();
    checkItems();
    checkIsPlaying();
    checkWaking();
    checkRest();
}

void SoundSystem::checkResponses()
{
    if (!m_facts.owed.empty()) {
        broken("every item with a response path gets its end response when it ends",
               soundName(m_facts.owed.front().id) + " waits for it");
    }
}

void SoundSystem::checkStarted(const SoundItem &item)
{
    if (item.responds && item.player != Player::None && !item.started) {
        broken("an item that has begun to play gets its started response", soundName(item.id));
    }
}

void SoundSystem::checkItems()
{
    const SoundMembers members = SoundMembers::of(*m_worker);
    const SoundLedger &ledger = m_facts.ledger;
    if (!isSame(members.queue, ledger.queue()) || !isSame(members.stopping, ledger.stopping())) {
        broken("every accepted item is queued by priority and arrival, or stopping, or has ended",
               {});
    }
    int withPlayer = 0;
    for (const SoundItem &item : ledger.queue()) {
        withPlayer += item.player != Player::None ? 1 : 0;
        checkStarted(item);
    }
    for (const SoundItem &item : ledger.stopping()) {
        ++withPlayer;
        checkStarted(item);
        if (item.player != Player::Stopping) {
            broken("the player of a cancelled item is told to stop", soundName(item.id));
        }
    }
    if (withPlayer != m_device.alive()) {
        broken("the player of an item that has ended is released", {});
    }
}

void SoundSystem::checkIsPlaying()
{
    const bool isEmpty = m_facts.ledger.isEmpty();
    const bool asks = m_facts.outstanding != Request::None;
    if (isEmpty && (m_facts.becameEmpty || !asks)) {
        m_facts.isPlaying = false;
    } else if (m_facts.taken) {
        m_facts.isPlaying = true;
    }
    if (saysIsPlaying() != m_facts.isPlaying) {
        broken(
            "is-playing becomes true when the first item is taken from the queue, and false when "
            "no item is queued or stopping",
            m_facts.isPlaying ? "it is false" : "it is true");
    }
    if (isEmpty && m_facts.isPlaying) {
        noted("is-playing stays true if all items are cancelled while an acquire is outstanding");
    }
}

void SoundSystem::checkWaking()
{
    const auto &queue = m_facts.ledger.queue();
    if (queue.empty() || m_facts.outstanding != Request::None) {
        return;
    }
    const SoundItem *active = m_facts.ledger.find(SoundMembers::of(*m_worker).activeId);
    if (active != nullptr && active->owesEnd()) {
        return;
    }
    const auto &stopping = m_facts.ledger.stopping();
    if (std::any_of(stopping.begin(), stopping.end(),
                    [](const SoundItem &item) { return item.owesEnd(); })) {
        broken("a queued item waits only for a stopping item that is the active one",
               soundName(queue.front().id) + " waits for another");
        return;
    }
    broken("no queued item waits without anything that will wake it",
           soundName(queue.front().id) + " waits for nothing");
}

bool SoundSystem::somethingGoesOn(const SoundMembers &members) const
{
    return m_facts.outstanding != Request::None || members.timerRuns || !m_facts.ledger.isEmpty();
}

void SoundSystem::checkRest()
{
    const SoundMembers members = SoundMembers::of(*m_worker);
    if (members.timerRuns && !m_facts.ledger.isEmpty()) {
        broken("the idle time runs only when nothing is queued or stopping", {});
    }
    if (m_facts.duckAsked && !m_facts.refused && !somethingGoesOn(members)) {
        broken("main audio is never left ducked except after a refused acquire", {});
    }
    if (m_facts.duckAsked && m_facts.refused && !somethingGoesOn(members)) {
        noted("main audio is left ducked after a refused acquire, until the next item has ended");
    }
    if (m_facts.granted && !somethingGoesOn(members)) {
        broken("the resource is never left held", {});
    }
    if (members.audioDucked != m_facts.duckAsked && m_facts.outstanding == Request::None) {
        broken("the module knows whether main audio is ducked", {});
    }
    if (members.audioResource != m_facts.granted) {
        broken("the module knows whether it holds the resource", {});
    }
    if (m_host.fatalRecords() != 0) {
        broken("nothing fatal is logged", {});
    }
}
