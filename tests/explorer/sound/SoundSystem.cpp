// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundSystem.h"

#include "explorer/sound/SoundRequests.h"

#include <algorithm>

namespace {
using Player = SoundItem::Player;
using exploration::Action;

// The numbers of the actions. Each kind has a base.
constexpr Action enqueueBase = 0; // three kinds, up to three priorities each
constexpr Action cancelBase = 10;
constexpr Action succeed = 20;
constexpr Action refuse = 21;
constexpr Action revokeBase = 22;
constexpr Action idle = 24;
constexpr Action endBase = 30; // three ends for each item
constexpr int kinds = 3;
constexpr int ends = 3;
constexpr int revokeTypes = 2;
constexpr int idleTime = 100; // milliseconds
} // namespace

SoundSystem::SoundSystem(const std::string &module, const SoundBounds &bounds)
    : m_bounds(bounds)
    , m_host(module, [this](const char *words) { lastWords(words); })
    , m_services(this, &m_facts)
    , m_device(this, &m_facts)
{
}

SoundSystem::~SoundSystem() = default;

void SoundSystem::start()
{
    m_facts = SoundFacts();
    m_services.clear();
    m_device.clear();
    m_worker = m_host.makeWorker();
}

void SoundSystem::finish()
{
    // A reply that comes after the module has been deleted must not have any effect.
    m_device.close();
    m_worker.reset();
    m_services.answerTooLate();
    ModuleHost::settle();
    if (m_device.alive() != 0) {
        broken("no player outlives the module", {});
    }
}

std::vector<Action> SoundSystem::actions()
{
    std::vector<Action> actions;
    if (m_facts.ledger.size() < m_bounds.alive) {
        addEnqueues(&actions);
    }
    for (const SoundItem &item : m_facts.ledger.queue()) {
        actions.push_back(Action(cancelBase + item.id));
    }
    if (m_facts.outstanding != SoundFacts::Request::None) {
        actions.push_back(succeed);
        actions.push_back(refuse);
    }
    addEnds(&actions);
    for (int type = 0; type < revokeTypes; ++type) {
        actions.push_back(Action(revokeBase + type));
    }
    if (SoundMembers::of(*m_worker).timerRuns) {
        actions.push_back(idle);
    }
    return actions;
}

void SoundSystem::addEnqueues(std::vector<Action> *actions) const
{
    int invalid = 0;
    int unanswered = 0;
    for (const auto *list : {&m_facts.ledger.queue(), &m_facts.ledger.stopping()}) {
        for (const SoundItem &item : *list) {
            invalid += item.valid ? 0 : 1;
            unanswered += item.responds ? 0 : 1;
        }
    }
    for (int kind = 0; kind < kinds; ++kind) {
        if ((Kind(kind) == Kind::Unplayable && invalid >= m_bounds.invalid) ||
            (Kind(kind) == Kind::Silent && unanswered >= m_bounds.unanswered)) {
            continue;
        }
        for (int priority = 0; priority < m_bounds.priorities; ++priority) {
            actions->push_back(Action(enqueueBase + kind * kinds + priority));
        }
    }
}

void SoundSystem::addEnds(std::vector<Action> *actions) const
{
    for (const auto *list : {&m_facts.ledger.queue(), &m_facts.ledger.stopping()}) {
        for (const SoundItem &item : *list) {
            if (!item.owesEnd() && item.player != Player::Paused) {
                continue;
            }
            for (int end = 0; end < ends; ++end) {
                actions->push_back(Action(endBase + item.id * ends + end));
            }
        }
    }
}

void SoundSystem::act(Action action)
{
    if (action >= endBase) {
        reportEnd((action - endBase) / ends, SoundDevice::End((action - endBase) % ends));
    } else if (action == idle) {
        letIdleTimePass();
    } else if (action >= revokeBase) {
        revoke(action - revokeBase);
    } else if (action >= succeed) {
        answer(action == succeed);
    } else if (action >= cancelBase) {
        cancel(action - cancelBase);
    } else {
        enqueue((action - enqueueBase) % kinds, Kind((action - enqueueBase) / kinds));
    }
    check();
}

int SoundSystem::freeId()
{
    int id = 0;
    while (m_facts.ledger.find(id) != nullptr) {
        ++id;
    }
    return id;
}

void SoundSystem::begin(const std::string &words)
{
    m_facts.beginStep();
    m_told = false;
    if (isNarrating()) {
        say(words);
    }
}

void SoundSystem::tell(const std::string &words)
{
    if (isNarrating()) {
        sayMore((m_told ? ", " : ": ") + words);
        m_told = true;
    }
}

void SoundSystem::enqueue(int priority, Kind kind)
{
    SoundItem item;
    item.id = freeId();
    item.priority = priority;
    item.valid = kind != Kind::Unplayable;
    item.responds = kind != Kind::Silent;
    begin("enqueue " + soundName(item.id) + " with priority " + std::to_string(priority) +
          (item.valid ? "" : ", of an invalid type") +
          (item.responds ? "" : ", without a response path"));
    m_facts.ledger.enqueue(item);
    m_facts.refused = false;
    const CMReply<QVariant> reply = ModuleHost::request(
        TavoNotificationPlayerEnqueuePath(),
        SoundRequests::enqueue(SoundRequests::name(item.id), priority, item.valid, item.responds));
    if (!reply.isFinished() || reply.error().isError()) {
        broken("a new item is accepted, and the request is answered at once", {});
    }
}

void SoundSystem::cancel(int id)
{
    begin("cancel " + soundName(id));
    m_facts.cancel(id);
    const CMReply<QVariant> reply = ModuleHost::request(
        TavoNotificationPlayerCancelPath(), SoundRequests::cancel(SoundRequests::name(id)));
    if (!reply.isFinished() || reply.error().isError()) {
        broken("a queued item can be cancelled, and the request is answered at once", {});
    }
}

void SoundSystem::answer(bool success)
{
    begin("the answer comes");
    m_services.answer(success);
    ModuleHost::settle();
}

void SoundSystem::revoke(int type)
{
    begin("the audio resource is revoked, type " + std::to_string(type));
    if (m_facts.outstanding != SoundFacts::Request::Acquire) {
        m_facts.granted = false;
        if (type == TavoPowerManagerRevokeMessageType::Revoked) {
            m_facts.cancelAll();
        }
    }
    const CMReply<QVariant> reply = ModuleHost::request(
        SoundRequests::revokePath(), SoundRequests::revoke(type, TavoPowerManagerResources::Audio));
    if (!reply.isFinished()) {
        broken("every revoke message is answered at once", {});
    }
}

void SoundSystem::letIdleTimePass()
{
    using Request = SoundFacts::Request;
    begin("the idle time passes");
    const Request before = m_facts.outstanding;
    m_host.clock().pass(std::chrono::milliseconds(idleTime - 1));
    if (!SoundMembers::of(*m_worker).timerRuns || m_facts.outstanding != before) {
        broken("the idle time is not shortened", {});
    }
    m_host.clock().pass(std::chrono::milliseconds(1));
    ModuleHost::settle();
}

void SoundSystem::reportEnd(int id, SoundDevice::End end)
{
    begin("the device reports an end");
    m_device.report(id, end);
    ModuleHost::settle();
}
