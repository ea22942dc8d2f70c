// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/sound/SoundLedger.h"
#include <core/tavo.h>

#include <string>
#include <vector>

/// Makes the choices of the module's surroundings and takes their reports.
class SoundJudge
{
public:
    virtual ~SoundJudge() = default;

    virtual int decide(int alternatives) = 0;
    virtual void broken(const char *rule, const std::string &detail = {}) = 0;
    virtual void noted(const char *rule) = 0;
    virtual void tell(const std::string &words) = 0; ///< part of the current step
};

/// An end response that is expected.
struct OwedResponse
{
    int id;
    TavoNotificationPlayerResponseType::Enum type;
};

/// What the clients, services and players know from the requests and from their own actions.
struct SoundFacts
{
    enum class Request : unsigned char { None, Duck, Unduck, Acquire };

    SoundLedger ledger;
    std::vector<OwedResponse> owed;

    Request outstanding = Request::None; ///< of the audio sequence; not answered yet
    bool duckAsked = false;              ///< by the last ducking request
    bool ducked = false;                 ///< the duck was answered and no unduck requested since
    bool granted = false;                ///< the power manager's resource is held
    bool refused = false;   ///< the last acquire was refused and no item accepted since
    bool isPlaying = false; ///< the expected is-playing value

    // In the current step.
    bool taken = false;       ///< an item was taken from the queue to be played
    bool becameEmpty = false; ///< both lists, after an end or the reply to an acquire

    void beginStep() { taken = becameEmpty = false; }

    /// The item ends. If it has a response path, a response is expected.
    void end(int id, TavoNotificationPlayerResponseType::Enum type);

    /// The effects of cancelling a queued item.
    void cancel(int id);

    /// The effects of a revoke or a refused acquire.
    void cancelAll();

    /// Call after an item's end or the reply to an acquire has been handled.
    void checkIfEmpty() { becameEmpty = becameEmpty || ledger.isEmpty(); }
};

/// The name of an item for people.
inline std::string soundName(int id)
{
    return std::string(1, char('a' + id));
}
