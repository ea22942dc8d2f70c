// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/seeds/SeedFolder.h"
#include "fuzz/seeds/Seeds.h"
#include "fuzz/support/Dictionary.h"
#include "fuzz/support/ValueWriter.h"

namespace {
void writeHostConfigurations(const SeedFolder &folder)
{
    folder.write("names", R"({"modules": ["powermanager", "player", "notifications"]})");
    folder.write("full", R"({
  "modules": [
    {"name": "pm", "library": "powermanager", "config": {"revokeTimeout": 500}},
    {"name": "player", "library": "./libplayer.so", "config": {"duckingAttenuation": -12.5}},
    "notifications"
  ],
  "modulePath": ["modules", "/opt/modules"],
  "log": {"file": "log.properties", "level": "WARN", "levels": {"Player": "TRACE"}}
})");
    folder.write("duplicate", R"({"modules": ["a", {"name": "a"}]})");
    folder.write("wrong-types", R"({"modules": [1, null, {"name": []}], "log": {"levels": 7}})");
    folder.write("unknown-key", R"({"modules": ["a"], "module": true})");
    folder.write("cut-off", "{\n  \"modules\": [\n");
    folder.write("bad-utf8", QByteArray("{\"modules\": [\"\xff\xfe\"]}"));
    folder.write("escapes", R"({"modules": ["\ud800", "\u0000", "\ud83d\udd14"]})");
    folder.write("numbers", R"([1e400, -0, 1E-400, 00, .5])");
    folder.write("deep", QByteArray(1500, '[') + QByteArray(1500, ']'));
    folder.write("empty", "");
}

QByteArray suitable(FuzzRecord kind, int number)
{
    ValueWriter writer;
    for (const FuzzFieldOf &field : fuzzFields(kind)) {
        writer.byte(int(FuzzFill::Suitable));
        if (field.type == FuzzField::Text) {
            writer.text(QStringLiteral("/sounds/bell.wav"));
        } else {
            writer.byte(number);
        }
    }
    return writer.bytes();
}

void writeModuleConfigurations(const SeedFolder &folder)
{
    // No value for the reader, then an empty first record.
    const QByteArray none(int(fuzzFields(FuzzRecord::PlayerConfiguration).size()) + 2, '\0');
    folder.write("empty", none);
    folder.write("in-range", QByteArray(1, '\0') + suitable(FuzzRecord::PlayerConfiguration, 0) +
                                 suitable(FuzzRecord::PowerManagerConfiguration, 5));
    folder.write("positive", QByteArray(1, '\0') + suitable(FuzzRecord::PlayerConfiguration, 5) +
                                 suitable(FuzzRecord::PowerManagerConfiguration, 0));
    const auto any = [&](const char *name, const QVariantHash &config) {
        ValueWriter writer;
        writer.value(config);
        folder.write(name, none + writer.bytes());
    };
    any("unknown-key", {{QStringLiteral("id"), 1}});
    any("player", {{QStringLiteral("duckingAttenuation"), -12.5},
                   {QStringLiteral("duckingFade"), 5},
                   {QStringLiteral("music"), QStringLiteral("/sounds/bell.wav")}});
    any("text-for-number", {{QStringLiteral("duckingFade"), QStringLiteral("5")}});
    any("fraction", {{QStringLiteral("duckingFade"), 0.5}});
    any("power-manager", {{QStringLiteral("revokeTimeout"), 100}});
    const QVariant values[] = {5, -12.5, QStringLiteral("a"), true, QVariantList{1}};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        ValueWriter writer;
        writer.value(values[i]);
        folder.write("value-" + QByteArray::number(int(i)), writer.bytes() + none);
    }
}

void writeAttentionSettings(const SeedFolder &folder)
{
    folder.write("nights", R"({"timeZone": "Europe/Berlin",
 "doNotDisturb": {"times": [{"days": ["Sun", "Mon"], "from": "22:00", "to": "07:00"},
                            {"days": ["Sat"], "from": "02:30", "to": "02:31"}],
  "silence": "sound", "passPriority": "High", "passSources": ["door*"], "passRepeatedWithin": 60,
  "summary": false}})");
    folder.write(
        "rules",
        R"({"apply": "first", "groupFrom": 3, "eachSource": {"messages": 5, "seconds": 10}, "rules": [
 {"name": "one", "when": {"source": ["mail", "chat*"], "category": ["email*"], "minPriority": "Low",
   "maxPriority": "High", "words": ["rules"], "pattern": "(?m)^ .a+", "times": [{"from": "08:00", "to": "24:00"}]},
  "then": {"priority": "Urgent", "timeout": 5000, "sound": "/a.wav", "group": "g", "groupFrom": 2,
   "chime": "/c.wav", "mute": true, "hide": true, "drop": false, "speak": true, "pass": true,
   "private": true, "mustSee": true}},
 {"name": "two", "then": {"drop": true}}]})");
    folder.write(
        "slow-pattern",
        R"({"rules": [{"name": "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", "when": {"pattern": "(a|aa|a*)*b$"}}]})");
    folder.write("wrong-type", R"({
 "rules": [
  {"name": "x", "when": {"source": 5}}
 ]
})");
    folder.write("cut-off", R"({
 "rules": [{"name")");
    folder.write("empty", "");
}
} // namespace

void writeConfigurationSeeds(const QString &corpus)
{
    writeHostConfigurations(SeedFolder(corpus, "fuzz_host_configuration"));
    writeModuleConfigurations(SeedFolder(corpus, "fuzz_module_configuration"));
    writeAttentionSettings(SeedFolder(corpus, "fuzz_attention_settings"));
}
