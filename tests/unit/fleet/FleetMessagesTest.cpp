// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fleet/protocol/FleetAnswer.h>
#include <fleet/protocol/FleetCall.h>
#include <fleet/protocol/FleetEvent.h>

namespace {
FleetCall good(const QByteArray &json)
{
    const auto read = FleetCall::fromJson(json);
    if (const auto *bad = std::get_if<FleetCall::Bad>(&read)) {
        ADD_FAILURE() << bad->reason.toStdString();
        return {};
    }
    return std::get<FleetCall>(read);
}

std::string reason(const QByteArray &json)
{
    const auto read = FleetCall::fromJson(json);
    const auto *bad = std::get_if<FleetCall::Bad>(&read);
    return bad != nullptr ? bad->reason.toStdString() : "none";
}
} // namespace

TEST(FleetCall, IsReadAsItWasWritten)
{
    const FleetCall call = good(
        R"({"id":"leak-7","from":"desk","call":"show","title":"Water","text":"Cellar","icon":"drop",)"
        R"("priority":"Urgent","timeout":0,"actions":{"ok":"Seen","no":"Later"},"sound":"alarm",)"
        R"("everywhere":true,"expires":1800000000123})");
    EXPECT_EQ(call.priority, 3);
    EXPECT_EQ(call.timeoutMs, 0);
    EXPECT_EQ(call.actions.size(), 2);
    EXPECT_EQ(call.expires, 1800000000123);
    EXPECT_EQ(good(call.toJson()).toJson(), call.toJson());
    for (const char *json :
         {R"({"id":"a","call":"sound","sound":"bell","priority":7,"at":5})",
          R"({"id":"a","call":"say","text":"Hello"})", R"({"id":"a","call":"cancel","target":"b"})",
          R"({"id":"a","call":"call","path":"/a/b","value":{"x":[1,null]}})",
          R"({"id":"a","call":"ping"})"}) {
        const FleetCall other = good(json);
        EXPECT_EQ(good(other.toJson()).toJson(), other.toJson());
    }
}

TEST(FleetCall, ATimeIsMillisecondsOrIso8601)
{
    EXPECT_EQ(good(R"({"id":"a","call":"sound","sound":"b","at":"1970-01-01T00:00:01.5Z"})").at,
              1500);
    EXPECT_EQ(good(R"({"id":"a","call":"sound","sound":"b","at":1500})").at, 1500);
    EXPECT_THAT(reason(R"({"id":"a","call":"sound","sound":"b","at":"noon"})"),
                testing::StartsWith("at: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"sound","sound":"b","at":"1900-01-01T00:00:00Z"})"),
                testing::StartsWith("at: "));
}

TEST(FleetCall, AMistakeIsToldWithItsKey)
{
    using testing::StartsWith;
    EXPECT_THAT(reason(""), StartsWith("not JSON"));
    EXPECT_THAT(reason("7"), StartsWith("not JSON"));
    EXPECT_EQ(reason("[]"), "not a JSON object");
    EXPECT_THAT(reason(R"({"id":"a","call":"ping","id":"b"})"), StartsWith("not JSON, or a key"));
    EXPECT_THAT(reason(R"({"id":"a","call":"ping","\u0069d":"b"})"),
                StartsWith("not JSON, or a key"));
    EXPECT_EQ(reason(R"({"id":"a","call":"call","path":"/a","value":[{"x":1},{"x":"\"x\":"}]})"),
              "none");
    EXPECT_THAT(reason(R"({"call":"ping"})"), StartsWith("id: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"dance"})"), StartsWith("call: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"ping","from":"a/b"})"), StartsWith("from: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"ping","more":1})"), StartsWith("more: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"show"})"), StartsWith("title: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"show","title":"x","timeout":-1})"),
                StartsWith("timeout: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"show","title":"x","priority":1.5})"),
                StartsWith("priority: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"show","title":"x","actions":["ok"]})"),
                StartsWith("actions: "));
    EXPECT_THAT(reason(R"({"id":"a","call":"cancel","target":""})"), StartsWith("target: "));
}

TEST(FleetCall, AMistakeKeepsWhomToAnswer)
{
    const auto read = FleetCall::fromJson(R"({"id":"a","from":"desk","call":"dance"})");
    const auto &bad = std::get<FleetCall::Bad>(read);
    EXPECT_EQ(bad.id, "a");
    EXPECT_EQ(bad.from, "desk");
}

TEST(FleetAnswer, IsReadAsItWasWritten)
{
    for (const char *json : {R"({"device":"porch","id":"a","shown":true})",
                             R"({"device":"porch","id":"a","sounding":true})",
                             R"({"device":"porch","done":[1],"id":"a"})",
                             R"({"device":"porch","error":"too late","id":"a"})"}) {
        const auto read = FleetAnswer::fromJson(json);
        ASSERT_TRUE(std::holds_alternative<FleetAnswer>(read)) << json;
        EXPECT_EQ(std::get<FleetAnswer>(read).toJson(), json);
    }
    for (const char *json :
         {"", "{}", R"({"device":"porch","id":"a"})", R"({"id":"a","shown":true})"}) {
        EXPECT_TRUE(std::holds_alternative<Failure>(FleetAnswer::fromJson(json))) << json;
    }
}

TEST(FleetEvent, IsReadAsItWasWritten)
{
    const char *json = R"({"action":"ok","device":"porch","end":"action","id":"a","time":5})";
    const auto read = FleetEvent::fromJson(json);
    ASSERT_TRUE(std::holds_alternative<FleetEvent>(read));
    EXPECT_EQ(std::get<FleetEvent>(read).toJson(), json);
    EXPECT_TRUE(std::holds_alternative<Failure>(
        FleetEvent::fromJson(R"({"device":"porch","end":"gone","id":"a","time":5})")));
}
