// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Tried once in every state: requests that must change nothing, and then an end without further
// requests.

#include "explorer/sound/SoundRequests.h"
#include "explorer/sound/SoundSystem.h"

namespace {
using Player = SoundItem::Player;

constexpr int maxSteps = 100; // to the end, from anywhere
} // namespace

void SoundSystem::inspect()
{
    tryWhatChangesNothing();
    if (!hasFinding()) {
        windUp();
    }
}

void SoundSystem::expectNoChange(const char *what, const std::string &before)
{
    tried();
    check();
    if (state() != before) {
        broken("a request that is refused or ignored changes nothing", what);
    }
}

void SoundSystem::tryRequest(const char *what, const CMPath &path, const QVariant &value,
                             bool accepted)
{
    const std::string before = state();
    m_facts.beginStep();
    const CMReply<QVariant> reply = ModuleHost::request(path, value);
    if (!reply.isFinished() || reply.error().isError() == accepted) {
        broken("a request is answered at once, with an error when it is refused", what);
    }
    expectNoChange(what, before);
}

void SoundSystem::tryWhatChangesNothing()
{
    constexpr int unknown = 25;
    const CMPath enqueuePath = TavoNotificationPlayerEnqueuePath();
    const CMPath cancelPath = TavoNotificationPlayerCancelPath();
    tryRequest("an item without an id", enqueuePath,
               SoundRequests::enqueue(QString(), m_bounds.priorities, true, true), false);
    tryRequest("the cancel of an unknown item", cancelPath,
               SoundRequests::cancel(SoundRequests::name(unknown)), false);
    tryRequest("the cancel of no item", cancelPath, SoundRequests::cancel(QString()), false);
    for (const auto *list : {&m_facts.ledger.queue(), &m_facts.ledger.stopping()}) {
        for (const SoundItem &item : *list) {
            // More urgent than all others: it would come first.
            tryRequest("an item with an id that is in use", enqueuePath,
                       SoundRequests::enqueue(SoundRequests::name(item.id), m_bounds.priorities,
                                              true, true),
                       false);
        }
    }
    for (const SoundItem &item : m_facts.ledger.stopping()) {
        tryRequest("the second cancel of an item", cancelPath,
                   SoundRequests::cancel(SoundRequests::name(item.id)), false);
    }
    for (const int type : {0, 1}) {
        tryRequest("the revoke of another resource", SoundRequests::revokePath(),
                   SoundRequests::revoke(type, TavoPowerManagerResources::Display), true);
    }
}

bool SoundSystem::windUpStep()
{
    if (m_facts.outstanding != SoundFacts::Request::None) {
        answer(true);
        return true;
    }
    for (const auto *list : {&m_facts.ledger.queue(), &m_facts.ledger.stopping()}) {
        for (const SoundItem &item : *list) {
            if (item.owesEnd()) {
                reportEnd(item.id, item.player == Player::Stopping ? SoundDevice::End::Stopped
                                                                   : SoundDevice::End::Ended);
                return true;
            }
        }
    }
    if (SoundMembers::of(*m_worker).timerRuns) {
        letIdleTimePass();
        return true;
    }
    return false;
}

void SoundSystem::windUp()
{
    for (int step = 0; step < maxSteps && windUpStep(); ++step) {
        tried();
        check();
        if (hasFinding()) {
            return;
        }
    }
    const bool isQuiet = m_facts.ledger.isEmpty() &&
                         m_facts.outstanding == SoundFacts::Request::None && !m_facts.granted &&
                         (!m_facts.duckAsked || m_facts.refused);
    if (!isQuiet) {
        broken(
            "once requests are answered, sounds end and time passes, everything ends and is given "
            "back",
            {});
    }
}
