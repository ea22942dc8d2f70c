// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Building and reading a record, beside the same hash built and read by hand.

#include <core/tavo.h>

#include <benchmark/benchmark.h>

namespace {
TavoNotificationPlayerItem builtRecord()
{
    return TavoNotificationPlayerItem()
        .setId(QStringLiteral("doorbell"))
        .setContent(QStringLiteral("file:///usr/share/sounds/chime.wav"))
        .setContentStreamFormat(QStringLiteral("audio/L16"))
        .setType(TavoNotificationPlayerItemType::Uri)
        .setPriority(TavoNotificationItemPriority::High)
        .setLoop(true);
}

QVariantHash builtByHand()
{
    QVariantHash hash;
    hash.insert(QStringLiteral("id"), QStringLiteral("doorbell"));
    hash.insert(QStringLiteral("content"), QStringLiteral("file:///usr/share/sounds/chime.wav"));
    hash.insert(QStringLiteral("contentStreamFormat"), QStringLiteral("audio/L16"));
    hash.insert(QStringLiteral("type"), 0);
    hash.insert(QStringLiteral("priority"), 2);
    hash.insert(QStringLiteral("loop"), true);
    return hash;
}

void recordBuild(benchmark::State &state)
{
    for ([[maybe_unused]] auto unused : state) {
        benchmark::DoNotOptimize(builtRecord());
    }
}

void recordBuildByHand(benchmark::State &state)
{
    for ([[maybe_unused]] auto unused : state) {
        benchmark::DoNotOptimize(builtByHand());
    }
}

void recordRead(benchmark::State &state)
{
    const TavoNotificationPlayerItem record = builtRecord();
    for ([[maybe_unused]] auto unused : state) {
        benchmark::DoNotOptimize(record.id());
        benchmark::DoNotOptimize(record.content());
        benchmark::DoNotOptimize(record.contentStreamFormat());
        benchmark::DoNotOptimize(record.type());
        benchmark::DoNotOptimize(record.priority());
        benchmark::DoNotOptimize(record.loop());
    }
}

void recordReadByHand(benchmark::State &state)
{
    const QVariantHash hash = builtByHand();
    for ([[maybe_unused]] auto unused : state) {
        benchmark::DoNotOptimize(hash.value(QStringLiteral("id")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("content")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("contentStreamFormat")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("type")).toInt());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("priority")).toInt());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("loop")).toBool());
    }
}

BENCHMARK(recordBuildByHand);
BENCHMARK(recordBuild);
BENCHMARK(recordReadByHand);
BENCHMARK(recordRead);
} // namespace
