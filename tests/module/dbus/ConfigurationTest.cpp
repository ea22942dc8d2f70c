// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DbusTest.h"

namespace {
using testing::StartsWith;

class DbusConfigurationTest : public DbusTest
{
protected:
    std::string failureWith(const QVariantHash &config)
    {
        try {
            load(config);
        } catch (const std::runtime_error &error) {
            return error.what();
        }
        return {};
    }
    std::string failureWithLimit(const QString &key, const QVariant &value)
    {
        return failureWith({{"limits", QVariantHash{{key, value}}}});
    }
};

TEST_F(DbusConfigurationTest, RefusesUnknownKeysAndNamesThem)
{
    EXPECT_EQ(failureWith({{"buss", "session"}}), "buss: unknown key");
    EXPECT_EQ(failureWithLimit("memory", 1), "limits.memory: unknown key");
    EXPECT_EQ(failureWith({{"sounds", QVariantHash{{"files", 1}}}}), "sounds.files: unknown key");
}

TEST_F(DbusConfigurationTest, RefusesValuesOfTheWrongType)
{
    EXPECT_EQ(failureWith({{"notifications", 1}}), "notifications: must be a boolean");
    EXPECT_EQ(failureWith({{"limits", 5}}), "limits: must be an object");
    EXPECT_EQ(failureWith({{"sounds", QVariantHash{{"schemes", "file"}}}}),
              "sounds.schemes: must be a list of strings");
    for (const char *host : {"", "a/b", "user@host", "host:99999", "http://host", "a b"}) {
        EXPECT_EQ(failureWith({{"sounds", QVariantHash{{"hosts", QVariantList{host}}}}}),
                  "sounds.hosts: \"" + std::string(host) +
                      "\" must be a host, with or without a port");
    }
    for (const char *folder : {"", "sounds", "./sounds"}) {
        EXPECT_EQ(failureWith({{"sounds", QVariantHash{{"folders", QVariantList{folder}}}}}),
                  "sounds.folders: \"" + std::string(folder) + "\" must be an absolute path");
    }
    EXPECT_THAT(failureWith({{"defaultTimeout", "long"}}), StartsWith("defaultTimeout: must be"));
}

TEST_F(DbusConfigurationTest, RefusesABusThatHasNoAddress)
{
    const auto loadOn = [](const char *bus) {
        const LoadedModule module(MODULE_FILE, "dbus", {{"bus", bus}});
    };
    for (const char *bus : {"", "Session", "bogus:", "bogus:path=/bus", "unix:", "/run/bus"}) {
        const std::string reason = "bus: \"" + std::string(bus) + "\" must be";
        EXPECT_THAT([&] { loadOn(bus); },
                    testing::ThrowsMessage<std::runtime_error>(StartsWith(reason)));
    }
    EXPECT_NO_THROW(loadOn("new:a=b;unix:path=/no/such/bus"));
}

TEST_F(DbusConfigurationTest, RefusesLimitsOutOfRange)
{
    for (const char *key :
         {"openNotifications", "requestsPerSecond", "valueBytes", "messageBytes", "subscriptions",
          "inboxes", "unreadBytes", "totalUnreadBytes", "totalOpenNotifications", "sounds",
          "totalSounds", "totalRequestBytes", "storedBytes", "totalStoredBytes"}) {
        EXPECT_THAT(failureWithLimit(key, -1), StartsWith(std::string("limits.") + key + ": "));
        EXPECT_THAT(failureWithLimit(key, 2e9), StartsWith(std::string("limits.") + key + ": "));
    }
    EXPECT_THAT(failureWithLimit("priority", -1), StartsWith("limits.priority: "));
    EXPECT_THAT(failureWith({{"defaultTimeout", -1}}), StartsWith("defaultTimeout: "));
}

TEST_F(DbusConfigurationTest, RunsWithAnAddressWithoutABus)
{
    const LoadedModule module(MODULE_FILE, "dbus", {{"bus", "unix:path=/nonexistent/bus"}});
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
}
} // namespace
