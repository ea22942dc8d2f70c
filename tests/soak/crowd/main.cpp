// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A crowd of hostile clients beside a well-behaved one, at a host on a bus like the system bus.

#include "Attacks.h"
#include "Crowd.h"
#include "CrowdHost.h"
#include "GoodClient.h"
#include "Report.h"
#include "support/EventLoop.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <csignal>
#include <exception>
#include <future>
#include <iostream>
#include <random>

namespace {
using namespace std::chrono_literals;
using Milliseconds = GoodClient::Milliseconds;

constexpr long maxResidentKiB = 512 * 1024;

/// How much more memory may be in use after the crowd has left, because the heap is fragmented
/// then.
constexpr long residentAfterwardsKiB = 64 * 1024;

constexpr Milliseconds settleTime = 5s;

/// How long sounds that were left behind may play.
constexpr Milliseconds quietTime = 2min;
constexpr Milliseconds progressInterval = 5s;
constexpr Milliseconds glance = 100ms;

/// How long the good client uses the host alone.
constexpr Milliseconds aloneTime = 2s;

std::atomic<bool> s_interrupted{false};

struct Options
{
    int seconds;
    int connections;
    std::uint64_t seed;
    Milliseconds limit;
    std::vector<const Attack *> attacks;
};

/// Calls a function that blocks, while this thread's event loop reads the host's log.
template <typename Function>
auto waitingFor(Function function)
{
    auto result = std::async(std::launch::async, function);
    waitFor([&] { return result.wait_for(0s) == std::future_status::ready; }, 10min);
    return result.get();
}

std::vector<GoodClient::Wait> useAlone(const CrowdHost &host)
{
    GoodClient client(host.setting());
    waitFor([] { return false; }, aloneTime);
    return waitingFor([&client] {
        client.stop();
        return client.waits();
    });
}

void showProgress(Milliseconds elapsed, const Crowd &crowd,
                  const std::vector<GoodClient::Wait> &waits, long residentKiB)
{
    long calls = 0;
    for (const Run &run : crowd.runs()) {
        calls += run.sent;
    }
    std::cout << elapsed.count() / 1000 << " s: " << calls
              << " hostile calls, longest wait for a reply "
              << std::max({longest(waits, GoodClient::Value), longest(waits, GoodClient::Message),
                           longest(waits, GoodClient::Close)})
                     .count()
              << " ms, for an urgent sound " << longest(waits, GoodClient::Alarm).count()
              << " ms, of the bus " << longest(waits, GoodClient::Bus).count()
              << " ms, of the machine " << longest(waits, GoodClient::Machine).count()
              << " ms, resident " << residentKiB / 1024 << " MiB" << std::endl;
}

/// Lets the crowd and the good client loose on the host.
void attackHost(const Options &options, const CrowdHost &host, Report &report,
                std::vector<std::string> &findings)
{
    GoodClient good(host.setting());
    Crowd crowd(host.setting(), options.connections, options.seed, options.attacks);
    QElapsedTimer elapsed;
    elapsed.start();
    Milliseconds shown{0};
    while (elapsed.elapsed() < options.seconds * 1000 && host.isRunning() && !s_interrupted) {
        waitFor([] { return false; }, glance);
        crowd.watch();
        const long resident = host.residentKiB();
        report.maxResidentKiB = std::max(report.maxResidentKiB, resident);
        if (Milliseconds(elapsed.elapsed()) >= shown + progressInterval) {
            shown = Milliseconds(elapsed.elapsed());
            showProgress(shown, crowd, good.waits(), resident);
        }
    }
    crowd.leave();
    waitFor(
        [&] {
            crowd.watch();
            return crowd.hasLeft();
        },
        1min);
    waitingFor([&good] {
        good.stop();
        return 0;
    });
    report.waits = good.waits();
    report.runs = crowd.runs();
    findings = crowd.findings();
}

bool isAsBefore(const HostState &now, const HostState &before)
{
    const bool isQuiet = now.descriptors <= before.descriptors && now.threads <= before.threads;
    return (isQuiet || now.isPlaying) && now.inboxes <= before.inboxes &&
           now.requesters <= before.requesters && now.modules <= before.modules;
}

/// Waits until all is as before, except for what stays by design when its client leaves: messages, and
/// sounds that play to their end.
void settle(const CrowdHost &host, Report &report)
{
    const auto readState = [&host] { return host.state(); };
    QElapsedTimer elapsed;
    elapsed.start();
    do {
        report.after = waitingFor(readState);
        if (isAsBefore(report.after, report.before)) {
            report.settled = Milliseconds(elapsed.elapsed());
            break;
        }
        waitFor([] { return false; }, glance);
    } while (!elapsed.hasExpired(settleTime.count()));
    report.rowsLeft = report.after.rows - report.before.rows;
    report.afterwards = useAlone(host);
    waitFor(
        [&] {
            // Again and again: the module for attention tells of floods some seconds after them.
            report.after = waitingFor([&] {
                host.clearDisplay();
                return readState();
            });
            // Between two sounds, nothing plays for a moment.
            return !report.after.isPlaying && isAsBefore(report.after, report.before) &&
                   report.after.rows <= report.before.rows;
        },
        quietTime);
}

void judge(const Options &options, const Report &report, std::vector<std::string> &findings)
{
    for (const auto *waits : {&report.waits, &report.afterwards}) {
        for (const std::string &text : complaints(*waits, options.limit)) {
            findings.push_back((waits == &report.waits ? "" : "afterwards: ") + text);
        }
    }
    if (report.maxResidentKiB > maxResidentKiB) {
        findings.push_back("more than " + std::to_string(maxResidentKiB) + " KiB resident");
    }
    if (report.settled.count() < 0) {
        findings.emplace_back("5 seconds after the crowd has left, not all is as before");
    }
    if (!isAsBefore(report.after, report.before) || report.after.isPlaying) {
        findings.emplace_back("at the end, not all is as before");
    }
    if (report.after.rows > report.before.rows) {
        findings.emplace_back("messages can't be removed");
    }
    if (report.after.residentKiB > report.before.residentKiB + residentAfterwardsKiB) {
        findings.emplace_back("memory stays in use");
    }
}

int run(const Options &options)
{
    std::cout << "Seed " << options.seed << std::endl;
    CrowdHost host;
    useAlone(host); // so that the host has loaded what it needs
    Report report;
    report.before = waitingFor([&host] { return host.state(); });
    std::vector<std::string> findings;
    attackHost(options, host, report, findings);
    try {
        settle(host, report);
        judge(options, report, findings);
    } catch (const std::exception &error) {
        findings.emplace_back(error.what());
    }
    if (!host.stop()) {
        findings.emplace_back("the host does not end as it should");
    }
    if (!findings.empty()) {
        std::cout << "\nThe end of the host's log:\n" << host.log() << '\n';
    }
    std::cout << '\n' << report.tables(options.limit) << std::endl;
    for (const std::string &finding : findings) {
        std::cout << "FINDING: " << finding << '\n';
    }
    std::cout << findings.size() << " findings" << std::endl;
    return findings.empty() ? 0 : 1;
}

Options parse(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.addOptions(
        {{"seconds", "How long the crowd attacks.", "N", "60"},
         {"connections", "The size of the crowd.", "N", "20"},
         {"seed", "Repeats the random decisions of the run with this seed.", "N"},
         {"limit", "How long the good client may wait, in milliseconds.", "N", "1000"},
         {"only", "Only attacks with this text in their names; may be given more than once.",
          "TEXT"},
         {"list", "Prints the names of the attacks."}});
    parser.addHelpOption();
    parser.process(application);
    Options options{parser.value("seconds").toInt(),
                    parser.value("connections").toInt(),
                    parser.isSet("seed") ? parser.value("seed").toULongLong()
                                         : std::random_device()(),
                    Milliseconds(parser.value("limit").toInt()),
                    {}};
    const QStringList only = parser.values("only");
    for (const Attack &attack : attacks()) {
        const auto isNamed = [&](const QString &text) {
            return QString(attack.name).contains(text);
        };
        if (only.isEmpty() || std::any_of(only.begin(), only.end(), isNamed)) {
            options.attacks.push_back(&attack);
        }
    }
    if (parser.isSet("list")) {
        for (const Attack *attack : options.attacks) {
            std::cout << attack->name << '\n';
        }
        std::exit(0);
    }
    if (options.seconds < 1 || options.connections < 1 || options.attacks.empty()) {
        parser.showHelp(2);
    }
    return options;
}
} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    std::signal(SIGINT, [](int) { s_interrupted = true; });
    try {
        return run(parse(application));
    } catch (const std::exception &error) {
        std::cerr << error.what() << std::endl;
        return 2;
    }
}
