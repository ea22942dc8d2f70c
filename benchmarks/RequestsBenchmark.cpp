// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Measures the four requests while a queue is filled up to a size, or emptied from it in random
// order, and their floor: the same record sent to a slot that only answers.

#include "ModelBench.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

namespace {
/// The benchmark's second argument: whether requester and module share a thread.
BenchModule::Place placeOf(const benchmark::State &state)
{
    return state.range(1) == 1 ? BenchModule::Place::ThisThread : BenchModule::Place::OwnThread;
}

template <typename Operation>
void timed(benchmark::State &state, Operation operation)
{
    const auto start = std::chrono::steady_clock::now();
    operation();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(took.count());
}

void finish(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Measures `count` requests in a row after the preparation. The function sends the request with
/// the given number.
template <typename Prepare, typename MakeRequest>
void measure(benchmark::State &state, const CMPath &path, Prepare prepare, MakeRequest makeRequest)
{
    BenchModule module(placeOf(state));
    const int count = int(state.range(0));
    for ([[maybe_unused]] auto unused : state) {
        module.restart();
        prepare(module);
        timed(state, [&] {
            for (int i = 0; i < count; ++i) {
                module.request(path, makeRequest(i));
            }
        });
    }
    finish(state);
}

template <typename MakeRequest>
void measureFloor(benchmark::State &state, MakeRequest makeRequest)
{
    measure(
        state, BenchServices::floorPath(), [](const BenchModule &) {}, makeRequest);
}

void soundEnqueueFloor(benchmark::State &state)
{
    measureFloor(state, soundRequest);
}

void soundEnqueue(benchmark::State &state)
{
    measure(
        state, TavoNotificationPlayerEnqueuePath(), [](const BenchModule &) {}, soundRequest);
}

void soundCancelFloor(benchmark::State &state)
{
    measureFloor(state, soundCancelRequest);
}

void soundCancel(benchmark::State &state)
{
    const int count = int(state.range(0));
    const std::vector<int> order = shuffled(count);
    measure(
        state, TavoNotificationPlayerCancelPath(),
        [count](const BenchModule &module) {
            for (int i = 0; i < count; ++i) {
                module.request(TavoNotificationPlayerEnqueuePath(), soundRequest(i));
            }
        },
        [&order](int i) { return soundCancelRequest(order[std::size_t(i)]); });
}

void displayOpenFloor(benchmark::State &state)
{
    measureFloor(state, messageRequest);
}

void displayOpen(benchmark::State &state)
{
    measure(
        state, TavoNotificationDisplayOpenPath(), [](const BenchModule &) {}, messageRequest);
}

void displayCancelFloor(benchmark::State &state)
{
    const CMPath path = TavoNotificationDisplaySimpleMessageNodePath() + tavoGenerateUuid();
    measureFloor(state, [&path](int) { return displayCancelRequest(path); });
}

void displayCancel(benchmark::State &state)
{
    const std::vector<int> order = shuffled(int(state.range(0)));
    std::vector<CMPath> paths(order.size());
    measure(
        state, TavoNotificationDisplayCancelNotifyPath(),
        [&](const BenchModule &module) {
            for (const int number : order) {
                const CMReply<QVariant> reply =
                    module.request(TavoNotificationDisplayOpenPath(), messageRequest(number));
                paths[std::size_t(number)] = TavoValue(reply.value().toHash()).path();
            }
        },
        [&paths](int i) { return displayCancelRequest(paths[std::size_t(i)]); });
}

void sizes(benchmark::internal::Benchmark *bench)
{
    bench->ArgsProduct({{1, 1000, 10000, 100000}, {1, 2}})->UseManualTime();
}

void floorSize(benchmark::internal::Benchmark *bench)
{
    bench->ArgsProduct({{10000}, {1, 2}})->UseManualTime();
}

BENCHMARK(soundEnqueueFloor)->Apply(floorSize);
BENCHMARK(soundEnqueue)->Apply(sizes);
BENCHMARK(soundCancelFloor)->Apply(floorSize);
BENCHMARK(soundCancel)->Apply(sizes);
BENCHMARK(displayOpenFloor)->Apply(floorSize);
BENCHMARK(displayOpen)->Apply(sizes);
BENCHMARK(displayCancelFloor)->Apply(floorSize);
BENCHMARK(displayCancel)->Apply(sizes);
} // namespace
