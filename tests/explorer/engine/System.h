// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Sequence.h"

#include <functional>
#include <memory>

namespace exploration {

class Recorder;

/// The system to explore: it can be started again, take steps, and be compared.
///
/// Everything must be reproducible: the same steps lead to the same state. Each working process has
/// one object, which is started many times. If it crashes or hangs, the explorer reports that as a
/// finding of the step.
class System
{
public:
    virtual ~System();

    /// Starts from the beginning, whatever has happened before.
    virtual void start() = 0;

    /// The actions possible in the current state. If there are several shortest
    /// sequences, the explorer prints the one whose first different action comes earlier here.
    virtual std::vector<Action> actions() = 0;

    /// Performs the action with all its effects, and checks the rules.
    virtual void act(Action action) = 0;

    /// The current state as bytes. States whose futures differ only in names have equal bytes. They
    /// must contain everything on which a later step or check depends.
    virtual std::string state() = 0;

    /// Called once for every state, to try things that should change nothing, or that take many
    /// steps. The system is finished and started again afterwards.
    virtual void inspect();

    /// Ends what start() started, in any state.
    virtual void finish();

    void setRecorder(Recorder *recorder) { m_recorder = recorder; }

protected:
    /// Chooses between alternatives within a step. The explorer tries all of them. The first (0) is
    /// taken where choices are not explored.
    int choose(int alternatives);

    /// Reports a broken rule. The sentence names the rule and is always the same for it.
    void finding(const std::string &rule, const std::string &detail = {});

    /// Reports something that is allowed, to be named and counted.
    void note(const std::string &rule, const std::string &detail = {});

    /// Whether a rule was broken in this step. Later checks of the step are then meaningless.
    bool hasFinding() const;

    /// Counts something that inspect() has tried.
    void tried();

    /// Whether this step has been taken and checked before. Checks can then be left out.
    bool isReplaying() const;

    /// Whether the sequence is narrated. Otherwise say() does nothing.
    bool isNarrating() const;

    /// Begins a line of the narration.
    void say(const std::string &words);

    /// Adds to the line. What has been said is kept even if the process dies.
    void sayMore(const std::string &words);

    /// Says why the process is about to end. Can be called from anywhere.
    void lastWords(const char *words);

private:
    Recorder *m_recorder = nullptr;
};

/// Makes the system, in its working process.
using SystemFactory = std::function<std::unique_ptr<System>()>;

} // namespace exploration
