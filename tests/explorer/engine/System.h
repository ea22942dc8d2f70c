// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Sequence.h"

#include <functional>
#include <memory>

namespace exploration {

class Recorder;

/// What is explored: something that can be started afresh, made to take steps, and compared.
///
/// Everything must be reproducible: the same steps lead to the same state. One object lives in each
/// of the explorer's working processes and is started many times. What dies or hangs in here takes
/// its process along, which the explorer reports as a finding of the step.
class System
{
public:
    virtual ~System();

    /// Starts afresh, as if nothing had been before.
    virtual void start() = 0;

    /// What can happen in the present state; in the order in which sequences are preferred.
    virtual std::vector<Action> actions() = 0;

    /// Lets it happen, and what follows from it, and checks what must hold then.
    virtual void act(Action action) = 0;

    /// The present state as bytes: equal for states whose futures are equal but for names. It must
    /// hold everything on which the further course or a check depends.
    virtual std::string state() = 0;

    /// Called once for every state: tries whatever changes nothing, or leads far. The system is
    /// ended and started afresh afterwards.
    virtual void inspect();

    /// Ends what has been started, in whatever state it is.
    virtual void finish();

    void setRecorder(Recorder *recorder) { m_recorder = recorder; }

protected:
    /// Decides between alternatives in the course of a step: the explorer goes through all of them.
    /// The first (0) is what happens when nobody asks.
    int choose(int alternatives);

    /// A rule was broken. The sentence is the same for all breaks of the rule.
    void finding(const std::string &rule, const std::string &detail = {});

    /// Something that is allowed, but named and counted.
    void note(const std::string &rule, const std::string &detail = {});

    /// Whether a rule was broken in this step: what follows says nothing.
    bool hasFinding() const;

    /// Something that inspect() tried, to be counted.
    void tried();

    /// Whether the present step has been taken before, with everything that it showed: what only
    /// checks can be left out.
    bool isReplaying() const;

    /// Whether words are wanted; say() is for nothing otherwise.
    bool isNarrating() const;

    /// Begins a line of the sequence in words.
    void say(const std::string &words);

    /// Adds to the line; what is said on the way is there even if the process dies of it.
    void sayMore(const std::string &words);

    /// Why the process is about to end; from wherever it is found out.
    void lastWords(const char *words);

private:
    Recorder *m_recorder = nullptr;
};

/// Makes the system, in a process of its own.
using SystemFactory = std::function<std::unique_ptr<System>()>;

} // namespace exploration
