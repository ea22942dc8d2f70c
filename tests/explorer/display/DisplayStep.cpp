// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayStep.h"

#include <array>
#include <utility>

using Form = DisplayModel::Form;

namespace {
void addOpenings(const DisplayModel &model, const DisplayBounds &bounds,
                 std::vector<DisplayStep> *steps)
{
    if (int(model.queue().size()) >= bounds.alive) {
        return;
    }
    for (int form = 0; form < bounds.forms; ++form) {
        for (int priority = 0; priority < bounds.priorities; ++priority) {
            for (int time = 0; time <= bounds.maxTimeout; ++time) {
                steps->push_back({DisplayStep::Kind::Open, Form(form), priority, time, 0});
            }
        }
    }
}

void addRemovals(const DisplayModel &model, std::vector<DisplayStep> *steps)
{
    using Kind = DisplayStep::Kind;
    bool sharedSeen = false;
    for (std::size_t i = 0; i < model.queue().size(); ++i) {
        const DisplayModel::Entry &entry = model.queue()[i];
        if (entry.form == Form::Shared && std::exchange(sharedSeen, true)) {
            continue;
        }
        for (const Kind kind : {Kind::Cancel, Kind::CancelBare, Kind::Close, Kind::CloseThenCancel,
                                Kind::CancelThenClose}) {
            steps->push_back({kind, entry.form, entry.priority, 0, int(i)});
        }
    }
}

void addTime(const DisplayModel &model, std::vector<DisplayStep> *steps)
{
    using Kind = DisplayStep::Kind;
    if (model.isDue()) {
        steps->push_back({Kind::Deliver});
    } else if (!model.queue().empty()) {
        steps->push_back({Kind::Tick});
    }
    const bool comesDue = model.isHeadTimed() && model.elapsed() + 1 >= model.queue().front().left;
    if (comesDue && !model.isOverdue()) {
        steps->push_back({Kind::LateTick});
    }
}

std::string place(int index)
{
    return index == 0 ? "the head" : "number " + std::to_string(index + 1);
}
} // namespace

std::vector<DisplayStep> DisplayStep::possible(const DisplayModel &model,
                                               const DisplayBounds &bounds)
{
    std::vector<DisplayStep> steps;
    addTime(model, &steps);
    addOpenings(model, bounds, &steps);
    addRemovals(model, &steps);
    return steps;
}

std::uint16_t DisplayStep::number() const
{
    return std::uint16_t(int(kind) << 10 | int(form) << 8 | priority << 6 | time << 3 | index);
}

DisplayStep DisplayStep::fromNumber(std::uint16_t number)
{
    return {Kind(number >> 10), Form(number >> 8 & 3), number >> 6 & 3, number >> 3 & 7,
            number & 7};
}

std::string DisplayStep::words() const
{
    static constexpr std::array<const char *, 3> forms{
        "a message", "a notification of the shared node",
        "a notification of the client's own node, named like the first message's"};
    switch (kind) {
    case Kind::Open:
        return std::string("open ") + forms.at(std::size_t(form)) + " of priority " +
               std::to_string(priority) +
               (time == 0 ? ", without a limit" : ", for " + std::to_string(time) + " ticks");
    case Kind::Cancel:
        return "cancel " + place(index);
    case Kind::CancelBare:
        return "cancel " + place(index) + " by the bare path";
    case Kind::Close:
        return "a client closes " + place(index);
    case Kind::CloseThenCancel:
        return "a client closes " + place(index) +
               ", and it is cancelled before the close is delivered";
    case Kind::CancelThenClose:
        return "cancel " + place(index) + ", and a client closes it before that is done";
    case Kind::Tick:
        return "a tick passes";
    case Kind::LateTick:
        return "a tick passes, and the head's timer, which is due, is late";
    case Kind::Deliver:
        return "the late timer is delivered";
    }
    return {};
}
