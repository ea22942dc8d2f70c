// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Report.h"

#include "explorer/engine/WorkingProcess.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

namespace exploration {
namespace {
void printWords(const std::vector<std::string> &lines, std::ostream &stream)
{
    int number = 0;
    for (const std::string &line : lines) {
        stream << std::setw(5) << ++number << ". " << line << '\n';
    }
}

void printSighting(const Options &options, const SystemFactory &factory, const Sighting &sighting,
                   std::ostream &stream)
{
    const auto &[kind, rule, detail] = sighting.observation;
    stream << (kind == Observation::Kind::Finding ? "FINDING: " : "noted: ") << rule << '\n';
    if (!detail.empty()) {
        stream << "  " << detail << '\n';
    }
    stream << "  seen " << sighting.count << " times, first after " << sighting.sequence.size()
           << " steps:\n";
    printWords(narrate(factory, sighting.sequence, sighting.inspecting, options.bounds.hang).lines,
               stream);
    stream << "  again with: --replay \"" << toString(sighting.sequence) << '"';
    for (const NumberOption &number : options.own) {
        stream << " --" << number.name << ' ' << options.numbers.at(number.name);
    }
    stream << "\n\n";
}

void printLevels(const Outcome &outcome, std::ostream &stream)
{
    stream << "new states by steps:";
    for (const std::size_t states : outcome.levels) {
        stream << ' ' << states;
    }
    stream << '\n';
}
} // namespace

void report(const Options &options, const SystemFactory &factory, const Outcome &outcome,
            std::ostream &stream)
{
    for (const Sighting &sighting : Outcome::sorted(outcome.notes)) {
        printSighting(options, factory, sighting, stream);
    }
    for (const Sighting &sighting : Outcome::sorted(outcome.findings)) {
        printSighting(options, factory, sighting, stream);
    }
    printLevels(outcome, stream);
    const double seconds = double(outcome.took.count()) / 1000;
    stream << std::fixed << std::setprecision(1);
    stream << "states      " << outcome.states << '\n';
    stream << "transitions " << outcome.transitions << ", and " << outcome.tried
           << " requests and endings tried by inspections\n";
    stream << "findings    " << outcome.findings.size() << '\n';
    stream << "noted       " << outcome.notes.size() << '\n';
    stream << "time        " << seconds << " s with " << options.bounds.jobs << " jobs, "
           << double(outcome.transitions) / std::max(seconds, 0.001) << " transitions a second\n";
    if (outcome.twice) {
        stream
            << "compared: each state was reached in two ways, and its steps had the same results\n";
    }
    if (outcome.closed) {
        stream << "closed: every step of every state has been taken; every state is reached within "
               << outcome.levels.size() - 1 << " steps\n";
    } else {
        stream << "ended by " << outcome.stoppedBy << ": every sequence of up to " << outcome.depth
               << " steps has been taken\n";
    }
}

bool replay(const Options &options, const SystemFactory &factory, std::ostream &stream)
{
    const Narration narration = narrate(factory, options.replay, true, options.bounds.hang);
    printWords(narration.lines, stream);
    bool clean = narration.end.empty();
    if (!clean) {
        stream << "FINDING: the process ended: " << narration.end << '\n';
    }
    for (const auto &[kind, rule, detail] : narration.observations) {
        const bool isFinding = kind == Observation::Kind::Finding;
        clean = clean && !isFinding;
        stream << (isFinding ? "FINDING: " : "noted: ") << rule
               << (detail.empty() ? "" : ": " + detail) << '\n';
    }
    return clean;
}

} // namespace exploration
