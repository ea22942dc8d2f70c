// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/System.h"
#include "explorer/module/ModuleHost.h"
#include "explorer/sound/SoundDevice.h"
#include "explorer/sound/SoundFacts.h"
#include "explorer/sound/SoundMembers.h"
#include "explorer/sound/SoundServices.h"

/// The bounds of the exploration.
struct SoundBounds
{
    int alive = 3; ///< accepted items that have not ended
    int priorities = 3;
    int invalid = 4;    ///< how many of them have a type that no player plays
    int unanswered = 0; ///< how many of them have no response path
};

/// The module's sound side, with clients, services and players that try every allowed behaviour.
class SoundSystem : public exploration::System, private SoundJudge
{
public:
    SoundSystem(const std::string &module, const SoundBounds &bounds);
    ~SoundSystem() override;

    void start() override;
    std::vector<exploration::Action> actions() override;
    void act(exploration::Action action) override;
    std::string state() override;
    void inspect() override;
    void finish() override;

private:
    using Action = exploration::Action;
    enum class Kind { Playable, Unplayable, Silent };

    // The actions of clients, services and players.
    void enqueue(int priority, Kind kind);
    void cancel(int id);
    void answer(bool success);
    void revoke(int type);
    void letIdleTimePass();
    void reportEnd(int id, SoundDevice::End end);

    void addEnqueues(std::vector<Action> *actions) const;
    void addEnds(std::vector<Action> *actions) const;
    int freeId();
    void begin(const std::string &words);

    // The checks, once no events are pending.
    void check();
    void checkItems();
    void checkStarted(const SoundItem &item);
    void checkResponses();
    void checkIsPlaying();
    void checkWaking();
    void checkRest();
    bool somethingGoesOn(const SoundMembers &members) const;

    // The inspection.
    void tryWhatChangesNothing();
    void expectNoChange(const char *what, const std::string &before);
    void tryRequest(const char *what, const CMPath &path, const QVariant &value, bool accepted);
    void windUp();
    bool windUpStep();

    int decide(int alternatives) override { return choose(alternatives); }
    void broken(const char *rule, const std::string &detail) override { finding(rule, detail); }
    void noted(const char *rule) override { note(rule); }
    void tell(const std::string &words) override;

    SoundBounds m_bounds;
    ModuleHost m_host;
    SoundFacts m_facts;
    SoundServices m_services;
    SoundDevice m_device;
    std::unique_ptr<CMWorker> m_worker;
    bool m_told = false;
};
