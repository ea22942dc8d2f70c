// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sends a number of requests of one operation twice: first to load everything and fill the caches,
// then in a function whose name tells the profiler what to count.

#include "ModelBench.h"

#include <QCoreApplication>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {
using MakeRequest = std::function<TavoValue(int)>;

/// Requests at a path. The function makes the value of the request with the given number.
struct Requests
{
    const BenchModule &module;
    CMPath path;
    MakeRequest make;

    void run(int first, int count) const
    {
        for (int i = first; i < first + count; ++i) {
            module.request(path, make(i));
        }
    }
};

/// An operation: prepares for `count` requests and returns them.
using Operation = std::function<Requests(const BenchModule &, int)>;

Requests routed(const BenchModule &module, int /*count*/)
{
    return {module, BenchServices::floorPath(), soundRequest};
}

Requests soundEnqueue(const BenchModule &module, int /*count*/)
{
    return {module, TavoNotificationPlayerEnqueuePath(), soundRequest};
}

Requests soundCancel(const BenchModule &module, int count)
{
    soundEnqueue(module, count).run(0, count);
    return {module, TavoNotificationPlayerCancelPath(),
            [order = shuffled(count)](int i) { return soundCancelRequest(order[std::size_t(i)]); }};
}

Requests displayOpen(const BenchModule &module, int /*count*/)
{
    return {module, TavoNotificationDisplayOpenPath(), messageRequest};
}

Requests displayCancel(const BenchModule &module, int count)
{
    const std::vector<int> order = shuffled(count);
    std::vector<CMPath> paths(order.size());
    for (const int number : order) {
        const CMReply<QVariant> reply =
            module.request(TavoNotificationDisplayOpenPath(), messageRequest(number));
        paths[std::size_t(number)] = TavoValue(reply.value().toHash()).path();
    }
    return {module, TavoNotificationDisplayCancelNotifyPath(),
            [paths](int i) { return displayCancelRequest(paths[std::size_t(i)]); }};
}

const std::map<std::string, Operation> &operations()
{
    static const std::map<std::string, Operation> all{{"routed-request", routed},
                                                      {"sound-enqueue", soundEnqueue},
                                                      {"sound-cancel", soundCancel},
                                                      {"display-open", displayOpen},
                                                      {"display-cancel", displayCancel}};
    return all;
}
} // namespace

/// Replaces the C library's function with which Qt seeds its random numbers: the counts are the
/// same only if the identifiers are.
extern "C" int getentropy(void *buffer, size_t length)
{
    static std::mt19937 generator(1);
    std::generate_n(static_cast<unsigned char *>(buffer), length,
                    [] { return static_cast<unsigned char>(generator()); });
    return 0;
}

extern "C" __attribute__((noinline)) void counted_requests(const Requests *requests, int first,
                                                           int count)
{
    requests->run(first, count);
}

/// Logs at INFO, as on a device, but to nowhere.
int main(int argc, char **argv)
{
    const auto operation = argc == 3 ? operations().find(argv[1]) : operations().end();
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (operation == operations().end() || count < 1) {
        std::fprintf(stderr, "Usage: %s OPERATION COUNT\n", argv[0]);
        return 2;
    }
    qputenv("QT_NO_GLIB", "1");
    const log4cplus::Initializer initializer;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::INFO_LOG_LEVEL);
    const QCoreApplication application(argc, argv);
    const BenchModule module;
    const Requests requests = operation->second(module, 2 * count);
    requests.run(0, count);
    counted_requests(&requests, count, count);
    return 0;
}
