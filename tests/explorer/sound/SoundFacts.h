// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/sound/SoundLedger.h"
#include <core/tavo.h>

#include <string>
#include <vector>

/// Decides what the module's surroundings do where they have a choice, and takes down what they see.
class SoundJudge
{
public:
    virtual ~SoundJudge() = default;

    virtual int decide(int alternatives) = 0;
    virtual void broken(const char *rule, const std::string &detail = {}) = 0;
    virtual void noted(const char *rule) = 0;
    virtual void tell(const std::string &words) = 0; ///< part of the present step
};

/// An end response that has to come.
struct OwedResponse
{
    int id;
    TavoNotificationPlayerResponseType::Enum type;
};

/// What the module's surroundings know, by what they were asked for and what they have done.
struct SoundFacts
{
    enum class Request : unsigned char { None, Duck, Unduck, Acquire };

    SoundLedger ledger;
    std::vector<OwedResponse> owed;

    Request outstanding = Request::None; ///< of the audio sequence, and yet to be answered
    bool duckAsked = false;              ///< by the last request to the main player
    bool ducked = false;                 ///< the duck was answered, and no unduck asked for since
    bool granted = false;                ///< the power manager's resource is held
    bool refused = false;   ///< the last acquire was, and no item has been accepted since
    bool isPlaying = false; ///< what the module should say of itself

    // Of the present step.
    bool taken = false;  ///< an item was taken from the queue to be played
    bool ranDry = false; ///< an item's end or the answer to an acquire found nothing in either list

    void beginStep() { taken = ranDry = false; }

    /// The item ends; its response, if it has a path, has to come.
    void end(int id, TavoNotificationPlayerResponseType::Enum type);

    /// What a cancel of a queued item leads to.
    void cancel(int id);

    /// What a revoke and a refused acquire lead to.
    void cancelAll();

    /// Call when an item's end or the answer to an acquire has been dealt with.
    void lookIfDry() { ranDry = ranDry || ledger.isEmpty(); }
};

/// The name of an item for people.
inline std::string soundName(int id)
{
    return std::string(1, char('a' + id));
}
