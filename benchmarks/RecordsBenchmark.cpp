// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Compares building and reading a record with building and reading the same hash by hand.

#include <core/tavo.h>

#include <benchmark/benchmark.h>

#include <string>

namespace {
/// A sound: strings, numbers and a boolean.
struct Sound
{
    using Record = TavoNotificationPlayerItem;

    static Record build()
    {
        return Record()
            .setId(QStringLiteral("doorbell"))
            .setContent(QStringLiteral("file:///usr/share/sounds/chime.wav"))
            .setContentStreamFormat(QStringLiteral("audio/L16"))
            .setType(TavoNotificationPlayerItemType::Uri)
            .setPriority(TavoNotificationItemPriority::High)
            .setLoop(true);
    }

    static QVariantHash buildByHand()
    {
        QVariantHash hash;
        hash.insert(QStringLiteral("id"), QStringLiteral("doorbell"));
        hash.insert(QStringLiteral("content"),
                    QStringLiteral("file:///usr/share/sounds/chime.wav"));
        hash.insert(QStringLiteral("contentStreamFormat"), QStringLiteral("audio/L16"));
        hash.insert(QStringLiteral("type"), 0);
        hash.insert(QStringLiteral("priority"), 2);
        hash.insert(QStringLiteral("loop"), true);
        return hash;
    }

    static void read(const Record &record)
    {
        benchmark::DoNotOptimize(record.id());
        benchmark::DoNotOptimize(record.content());
        benchmark::DoNotOptimize(record.contentStreamFormat());
        benchmark::DoNotOptimize(record.type());
        benchmark::DoNotOptimize(record.priority());
        benchmark::DoNotOptimize(record.loop());
    }

    static void readByHand(const QVariantHash &hash)
    {
        benchmark::DoNotOptimize(hash.value(QStringLiteral("id")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("content")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("contentStreamFormat")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("type")).toInt());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("priority")).toInt());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("loop")).toBool());
    }
};

/// How a sound ended.
struct Response
{
    using Record = TavoNotificationPlayerResponse;

    static Record build()
    {
        return Record()
            .setId(QStringLiteral("doorbell"))
            .setType(TavoNotificationPlayerResponseType::Finished);
    }

    static QVariantHash buildByHand()
    {
        QVariantHash hash;
        hash.insert(QStringLiteral("id"), QStringLiteral("doorbell"));
        hash.insert(QStringLiteral("type"), int(TavoNotificationPlayerResponseType::Finished));
        return hash;
    }

    static void read(const Record &record)
    {
        benchmark::DoNotOptimize(record.id());
        benchmark::DoNotOptimize(record.type());
    }

    static void readByHand(const QVariantHash &hash)
    {
        benchmark::DoNotOptimize(hash.value(QStringLiteral("id")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("type")).toInt());
    }
};

/// A message. Its texts are not translatable, so by hand they are plain strings.
struct Message
{
    using Record = TavoNotificationDisplayItem;

    static Record build()
    {
        return Record()
            .setId(QStringLiteral("door"))
            .setTitle(QStringLiteral("Front door"))
            .setMessage(QStringLiteral("Somebody is at the door"))
            .setTimeout(5000)
            .setPriority(TavoNotificationItemPriority::High);
    }

    static QVariantHash buildByHand()
    {
        QVariantHash hash;
        hash.insert(QStringLiteral("id"), QStringLiteral("door"));
        hash.insert(QStringLiteral("title"), QStringLiteral("Front door"));
        hash.insert(QStringLiteral("message"), QStringLiteral("Somebody is at the door"));
        hash.insert(QStringLiteral("timeout"), 5000);
        hash.insert(QStringLiteral("priority"), 2);
        return hash;
    }

    static void read(const Record &record)
    {
        benchmark::DoNotOptimize(record.id());
        benchmark::DoNotOptimize(record.title());
        benchmark::DoNotOptimize(record.message());
        benchmark::DoNotOptimize(record.timeout());
        benchmark::DoNotOptimize(record.priority());
    }

    static void readByHand(const QVariantHash &hash)
    {
        benchmark::DoNotOptimize(hash.value(QStringLiteral("id")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("title")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("message")).toString());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("timeout")).toInt());
        benchmark::DoNotOptimize(hash.value(QStringLiteral("priority")).toInt());
    }
};

template <typename Kind>
void build(benchmark::State &state)
{
    for ([[maybe_unused]] auto unused : state) {
        benchmark::DoNotOptimize(Kind::build());
    }
}

template <typename Kind>
void buildByHand(benchmark::State &state)
{
    for ([[maybe_unused]] auto unused : state) {
        benchmark::DoNotOptimize(Kind::buildByHand());
    }
}

template <typename Kind>
void read(benchmark::State &state)
{
    const auto record = Kind::build();
    for ([[maybe_unused]] auto unused : state) {
        Kind::read(record);
    }
}

template <typename Kind>
void readByHand(benchmark::State &state)
{
    const QVariantHash hash = Kind::buildByHand();
    for ([[maybe_unused]] auto unused : state) {
        Kind::readByHand(hash);
    }
}

template <typename Kind>
int addBenchmarks(const std::string &name)
{
    benchmark::RegisterBenchmark((name + "BuildByHand").c_str(), buildByHand<Kind>);
    benchmark::RegisterBenchmark((name + "Build").c_str(), build<Kind>);
    benchmark::RegisterBenchmark((name + "ReadByHand").c_str(), readByHand<Kind>);
    benchmark::RegisterBenchmark((name + "Read").c_str(), read<Kind>);
    return 0;
}

const int added = addBenchmarks<Sound>("recordSound") + addBenchmarks<Response>("recordResponse") +
                  addBenchmarks<Message>("recordMessage");
} // namespace
