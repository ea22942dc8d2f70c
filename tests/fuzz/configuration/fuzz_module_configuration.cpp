// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The modules' configurations: any hash into worker_create. The result is a worker, or an error
// that names a key.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"
#include "support/LoadedModule.h"
#include "support/PostedEvents.h"
#include "support/scripted/ScriptedPlayers.h"
#include <core/tavo.h>

#include <stdexcept>

namespace {
void create(const char *file, const char *name, const QVariantHash &config)
{
    try {
        const LoadedModule module(QString::fromLocal8Bit(file), name, config);
        deliverPosted();
    } catch (const std::runtime_error &error) {
        const QString text = QString::fromStdString(error.what());
        const int separator = text.lastIndexOf(QLatin1String(": "));
        FUZZ_CHECK(separator >= 0 && separator + 2 < text.size(), error.what());
    }
    FUZZ_CHECK(!CMRoot()->getValue(TavoPlayerMainAudioStatePath()).isValid(),
               "a deleted worker has left a node");
}

/// The reader alone: results are in range, and unread keys are errors.
void read(const QVariantHash &config)
{
    try {
        TavoConfiguration reader(config);
        const int whole = reader.integer(QStringLiteral("duckingFade"), 5, -10, 10);
        FUZZ_CHECK(whole >= -10 && whole <= 10, whole);
        const double number = reader.number(QStringLiteral("duckingAttenuation"), -1, -96, 0);
        FUZZ_CHECK(number >= -96 && number <= 0, number);
        reader.string(QStringLiteral("music"), {});
        reader.finish();
        FUZZ_CHECK(config.size() <= 3, "an unread key is accepted");
    } catch (const std::runtime_error &error) {
        FUZZ_CHECK(!config.isEmpty(), error.what());
        FUZZ_CHECK(error.what()[0] != '\0', "an error without a text");
    }
}
} // namespace

void fuzzOne(ByteReader &input)
{
    ScriptedPlayers::instance().reset();
    ValueReader values(input);
    const QVariant each = values.value();
    for (const char *key : {"duckingFade", "duckingAttenuation", "music", "id"}) {
        read({{QString::fromLatin1(key), each}});
    }
    create(TAVO_PLAYER_MODULE, "player", values.record(FuzzRecord::PlayerConfiguration));
    create(TAVO_POWERMANAGER_MODULE, "powermanager",
           values.record(FuzzRecord::PowerManagerConfiguration));
    const QVariantHash any = values.value().toHash();
    create(TAVO_PLAYER_MODULE, "player", any);
    create(TAVO_POWERMANAGER_MODULE, "powermanager", any);
    create(TAVO_NOTIFICATIONS_MODULE, nullptr, any);
    read(any);
    // The players of deleted workers are still registered.
    ScriptedPlayers::instance().reset();
}
