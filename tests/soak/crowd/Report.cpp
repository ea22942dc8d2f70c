// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "Attacks.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

namespace {
using Milliseconds = GoodClient::Milliseconds;
using Wait = GoodClient::Wait;

template <typename... Arguments>
std::string format(const char *text, Arguments... arguments)
{
    std::array<char, 256> line{};
    std::snprintf(line.data(), line.size(), text, arguments...);
    return line.data();
}

bool isForHost(GoodClient::Kind kind)
{
    return kind != GoodClient::Machine && kind != GoodClient::Bus;
}

std::string attackTable(const std::vector<Run> &runs, const std::vector<Wait> &waits)
{
    std::string text = format("| %-40s | %5s | %8s | %8s | %8s | %9s | %9s |\n", "Attack", "runs",
                              "calls", "answered", "refused", "reply, ms", "sound, ms");
    text += "|" + std::string(42, '-') + "|" + "------:|" + "---------:|---------:|---------:|" +
            "----------:|----------:|\n";
    for (const Attack &attack : attacks()) {
        long times = 0;
        Run sum{};
        Milliseconds reply{0};
        Milliseconds sound{0};
        for (const Run &run : runs) {
            if (run.attack != &attack) {
                continue;
            }
            ++times;
            sum.sent += run.sent;
            sum.answered += run.answered;
            sum.refused += run.refused;
            for (const Wait &wait : waits) {
                if (isForHost(wait.kind) && wait.start < run.end && run.start < wait.end) {
                    Milliseconds &most = wait.kind == GoodClient::Alarm ? sound : reply;
                    most = std::max(most, wait.duration());
                }
            }
        }
        if (times > 0) {
            text += format("| %-40s | %5ld | %8ld | %8ld | %8ld | %9ld | %9ld |\n", attack.name,
                           times, sum.sent, sum.answered, sum.refused, long(reply.count()),
                           long(sound.count()));
        }
    }
    return text;
}

std::string waitTable(const std::vector<Wait> &during, const std::vector<Wait> &afterwards)
{
    std::string text = format("| %-40s | %6s | %6s | %11s | %15s |\n", "The good client waited for",
                              "times", "failed", "longest, ms", "afterwards, ms");
    text += "|" + std::string(42, '-') + "|-------:|-------:|------------:|----------------:|\n";
    for (int i = 0; i < GoodClient::kinds; ++i) {
        const auto kind = GoodClient::Kind(i);
        long count = 0;
        long failed = 0;
        for (const Wait &wait : during) {
            count += wait.kind == kind ? 1 : 0;
            failed += wait.kind == kind && !wait.failure.empty() ? 1 : 0;
        }
        text +=
            format("| %-40s | %6ld | %6ld | %11ld | %15ld |\n", GoodClient::names[i], count, failed,
                   long(longest(during, kind).count()), long(longest(afterwards, kind).count()));
    }
    return text;
}

/// A line for each wait for the host that was too long, with the attacks that ran at that time.
std::string longWaits(const std::vector<Run> &runs, const std::vector<Wait> &waits,
                      Milliseconds limit)
{
    std::string text;
    for (const Wait &wait : waits) {
        if (!isForHost(wait.kind) || wait.duration() <= limit) {
            continue;
        }
        std::map<std::string, int> attacks;
        for (const Run &run : runs) {
            if (wait.start < run.end && run.start < wait.end) {
                ++attacks[run.attack->name];
            }
        }
        const auto since = wait.start - waits.front().start;
        text += format("%ld ms for %s, after %ld s, beside:\n", long(wait.duration().count()),
                       GoodClient::names[wait.kind],
                       long(std::chrono::duration_cast<std::chrono::seconds>(since).count()));
        for (const auto &[name, count] : attacks) {
            text += format("    %d x %s\n", count, name.c_str());
        }
    }
    return text;
}

std::string stateTable(const Report &report)
{
    std::string text =
        format("| %-40s | %7s | %7s | %7s |\n", "The host", "before", "most", "after");
    text += "|" + std::string(42, '-') + "|--------:|--------:|--------:|\n";
    const auto row = [&](const char *name, long before, long after) {
        text += format("| %-40s | %7ld | %7s | %7ld |\n", name, before, "", after);
    };
    text += format("| %-40s | %7ld | %7ld | %7ld |\n", "resident memory, KiB",
                   report.before.residentKiB, report.maxResidentKiB, report.after.residentKiB);
    row("file descriptors", report.before.descriptors, report.after.descriptors);
    row("threads", report.before.threads, report.after.threads);
    row("messages on display", report.before.rows, report.after.rows);
    row("inboxes", report.before.inboxes, report.after.inboxes);
    row("requesters of ducking", report.before.requesters, report.after.requesters);
    row("modules at the power manager", report.before.modules, report.after.modules);
    text += format("\nMessages that the crowd left on display: %ld. ", report.rowsLeft);
    text += report.settled.count() < 0
                ? "The rest was not as before in time.\n"
                : format("The rest was as before after %ld ms.\n", long(report.settled.count()));
    return text;
}
} // namespace

std::string Report::tables(Milliseconds limit) const
{
    return waitTable(waits, afterwards) + "\n" + stateTable(*this) + "\n" +
           attackTable(runs, waits) + "\n" + longWaits(runs, waits, limit);
}

Milliseconds longest(const std::vector<Wait> &waits, GoodClient::Kind kind)
{
    Milliseconds most{0};
    for (const Wait &wait : waits) {
        if (wait.kind == kind) {
            most = std::max(most, wait.duration());
        }
    }
    return most;
}

std::vector<std::string> complaints(const std::vector<Wait> &waits, Milliseconds limit)
{
    std::map<std::string, int> counts;
    for (const Wait &wait : waits) {
        if (!isForHost(wait.kind)) {
            continue;
        }
        const std::string name = GoodClient::names[wait.kind];
        if (!wait.failure.empty()) {
            ++counts[name + ": " + wait.failure];
        } else if (wait.duration() > limit) {
            ++counts[name + ": longer than " + std::to_string(limit.count()) + " ms"];
        }
    }
    std::vector<std::string> texts;
    for (const auto &[text, count] : counts) {
        texts.push_back(text + ", " + std::to_string(count) + " times");
    }
    return texts;
}
