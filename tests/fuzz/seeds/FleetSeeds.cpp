// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/seeds/SeedFolder.h"
#include "fuzz/seeds/Seeds.h"

void writeFleetSeeds(const QString &corpus)
{
    const SeedFolder folder(corpus, "fuzz_fleet");
    folder.write(
        "show",
        "tavo/v1/porch/call\n"
        R"({"id":"leak-7","from":"desk","call":"show","title":"Water","priority":"urgent","timeout":0,"actions":{"ok":"Seen"},"sound":"alarm","everywhere":true})");
    folder.write(
        "sound",
        "tavo/v1/group/all/call\n"
        R"({"id":"b","call":"sound","sound":"bell","priority":7,"at":"2026-01-31T07:00:00Z"})");
    folder.write("cancel",
                 "tavo/v1/porch/call\n"
                 R"({"id":"c","call":"cancel","target":"leak-7","expires":1800000000123})");
    folder.write(
        "call",
        "tavo/v1/porch/call\n"
        R"({"id":"d","call":"call","path":"/player/mainAudio/volume","value":{"x":[0.25,null,true]}})");
    folder.write("answer", "tavo/v1/porch/answer/desk\n"
                           R"({"device":"porch","done":[1],"id":"a"})");
    folder.write("error", "tavo/v1/porch/answer/desk\n"
                          R"({"device":"porch","error":"too late","id":"a"})");
    folder.write("event", "tavo/v1/group/floor-3/end\n"
                          R"({"action":"ok","device":"porch","end":"action","id":"a","time":5})");
    folder.write("wildcards", "tavo/v1/+/state/#\n"
                              R"({"id":"+/#"})");
}
