// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A host that reads its configuration again while it runs.

#include "HostTest.h"
#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"

#include <csignal>
#include <cstdlib>

using testing::HasSubstr;

namespace {
class HostReloadTest : public HostTest
{
protected:
    /// Starts a host with these modules, and with what else is in the configuration.
    void start(const QJsonArray &modules, const QJsonObject &others = {})
    {
        m_others = others;
        write(modules);
        ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    }

    QString write(const QJsonArray &modules)
    {
        QJsonObject configuration = m_others;
        configuration.insert("modules", modules);
        return m_host.writeFile("host.json", QJsonDocument(configuration).toJson());
    }

    /// Has the host reload these modules. Returns whether it then logs the text.
    bool reloads(const QJsonArray &modules, const QString &text)
    {
        write(modules);
        m_host.sendSignal(SIGHUP);
        return m_host.waitForLog(text);
    }

    static QJsonObject standIn(const QJsonObject &config)
    {
        return {{"name", "other"}, {"library", "stand_in"}, {"config", config}};
    }

    void addConfiguration() { m_host.addArguments({"--config", m_host.folder() + "/host.json"}); }

    void SetUp() override { addConfiguration(); }

    QJsonObject m_others;
};

const QString reloaded = QStringLiteral("INFO  Host [main] Reloaded the configuration\n");
const QString needsRestart =
    QStringLiteral("WARN  Host [main] Reloaded the configuration, needs a restart: ");
const QString stays = QStringLiteral("ERROR Host [main] The configuration stays as it was: ");

TEST_F(HostReloadTest, ChangesTheLogLevelsToThoseOfTheNewConfiguration)
{
    start({scripted("one")},
          {{"log", QJsonObject{{"level", "ERROR"}, {"levels", QJsonObject{{"Scripted", "OFF"}}}}}});
    m_others = {{"log", QJsonObject{{"levels", QJsonObject{{"Host", "DEBUG"}}}}}};
    EXPECT_TRUE(reloads({scripted("one", {{"echo", "first"}})}, reloaded));
    // The level of this logger is not in the file any more.
    EXPECT_FALSE(m_host.log().contains("one echo first"));
    EXPECT_TRUE(reloads({scripted("one", {{"echo", "second"}})}, "one echo second"));
}

TEST_F(HostReloadTest, HandsModulesTheirConfigurationWithTheFragments)
{
    start({scripted("one")});
    ASSERT_TRUE(QDir(m_host.folder()).mkdir("host.json.d"));
    m_host.writeFile("host.json.d/more.json",
                     R"({"modules": [{"name": "one", "config": {"echo": "of the fragment"}}]})");
    EXPECT_TRUE(reloads({scripted("one")}, reloaded));
    EXPECT_TRUE(m_host.log().contains("Scripted [one] one echo of the fragment"));
}

TEST_F(HostReloadTest, NamesWhatNeedsARestart)
{
    start({scripted("one"), standIn({})});
    m_others = {{"modulePath", QJsonArray{"."}}, {"log", QJsonObject{{"file", "log.properties"}}}};
    EXPECT_TRUE(
        reloads({scripted("one", {{"restart", QJsonArray{"device"}}}), standIn({{"device", "x"}}),
                 scripted("three")},
                needsRestart + "modules, modulePath, log.file, one.device, other.device\n"));
}

TEST_F(HostReloadTest, NamesItUntilTheHostIsRestarted)
{
    start({standIn({})});
    EXPECT_TRUE(reloads({standIn({{"device", "x"}})}, needsRestart + "other.device\n"));
    EXPECT_TRUE(reloads({standIn({{"device", "y"}})}, needsRestart + "other.device\n"));
    EXPECT_TRUE(reloads({standIn({})}, reloaded));
}

TEST_F(HostReloadTest, KeepsItsConfigurationWhenTheFileIsWrong)
{
    start({scripted("one")});
    m_host.writeFile("host.json", R"({"modules": ["scripted"], "log": {"level": "LOUD"}})");
    m_host.sendSignal(SIGHUP);
    EXPECT_TRUE(
        m_host.waitForLog(stays + m_host.folder() + "/host.json: log.level: must be one of"));
    EXPECT_TRUE(reloads({scripted("one", {{"echo", "later"}})}, "one echo later"));
}

TEST_F(HostReloadTest, KeepsItsConfigurationWhenTheFileIsGone)
{
    start({scripted("one")});
    ASSERT_TRUE(QFile::remove(m_host.folder() + "/host.json"));
    m_host.sendSignal(SIGHUP);
    EXPECT_TRUE(
        m_host.waitForLog(stays + m_host.folder() + "/host.json: No such file or directory\n"));
}

TEST_F(HostReloadTest, KeepsItsConfigurationWhenAModuleIsMissing)
{
    start({scripted("one")});
    EXPECT_TRUE(reloads({scripted("one", {{"echo", "new"}}), "absent"},
                        stays + m_host.folder() +
                            "/host.json: modules[1]: there is no libtavo_absent.so in "));
    EXPECT_FALSE(m_host.log().contains("one echo new"));
}

TEST_F(HostReloadTest, GivesModulesTheirPreviousConfigurationWhenAnotherRefusesTheNewOne)
{
    start({scripted("one", {{"echo", "old"}}), scripted("two")});
    EXPECT_TRUE(reloads(
        {scripted("one", {{"echo", "new"}}), scripted("two", {{"refuse", "size: must be less"}})},
        stays + m_host.folder() + "/host.json: modules[1]: size: must be less\n"));
    const QString log = m_host.log();
    EXPECT_GT(log.lastIndexOf("one echo old"), log.lastIndexOf("one echo new"));
}

TEST_F(HostReloadTest, GivesUpOnAModuleThatHangs)
{
    const QString fifo = makeFifo("never");
    start({scripted("one", {{"workWaits", fifo}})});
    EXPECT_TRUE(reloads({scripted("one", {{"echo", "late"}})},
                        stays + m_host.folder() + "/host.json: modules[0]: the module hangs\n"));
    releaseFifo(fifo);
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_FALSE(m_host.log().contains("one echo late"));
}

TEST_F(HostReloadTest, ChangesWhatClientsMayDo)
{
    const PrivateBus bus;
    const auto modules = [&](int inboxes, const QString &folder) {
        const QJsonObject config{{"bus", bus.address()},
                                 {"limits", QJsonObject{{"inboxes", inboxes}}},
                                 {"sounds", QJsonObject{{"folders", QJsonArray{folder}}}}};
        return QJsonArray{QJsonObject{{"name", "dbus"}, {"config", config}}};
    };
    start(modules(0, "/"));
    ASSERT_TRUE(m_host.waitForLog("Serving org.tavo.Model1"));
    BusClient client(bus.address());
    client.setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
    const auto play = [&] {
        const QVariantHash item{{"id", "bell"},
                                {"type", 0},
                                {"priority", 1},
                                {"content", m_host.folder() + "/host.json"}};
        return client
            .call("Call",
                  [&](BusWriter &writer) {
                      writer.writeString("/notifications/player/enqueue");
                      writer.writeVariant(QVariantHash{{"notificationPlayerItem", item}});
                  })
            .errorName();
    };
    EXPECT_THAT(client.call("OpenInbox").errorName(), HasSubstr("LimitsExceeded"));
    EXPECT_THAT(play(), HasSubstr("NoSuchNode")); // there is no module that plays
    EXPECT_TRUE(reloads(modules(1, "/usr"), reloaded));
    EXPECT_TRUE(client.call("OpenInbox").succeeds());
    EXPECT_THAT(play(), HasSubstr("AccessDenied"));
}

TEST_F(HostReloadTest, TellsThatAnotherBusNeedsARestart)
{
    const PrivateBus bus;
    const auto modules = [](const QString &address) {
        return QJsonArray{QJsonObject{{"name", "dbus"}, {"config", QJsonObject{{"bus", address}}}}};
    };
    start(modules(bus.address()));
    EXPECT_TRUE(reloads(modules("session"), needsRestart + "dbus.bus\n"));
}

TEST_F(HostReloadTest, EndsInsteadWhenItsTerminalHasBeenClosed)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const QString script =
        m_host.writeFile("on_terminal", "#!/bin/sh\nexec " + m_host.program().toUtf8() +
                                            " \"$@\" 2<>" + QByteArray(ptsname(terminal)) + '\n');
    ASSERT_TRUE(QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner));
    m_host.setProgram(script);
    start({scripted("one")});
    close(terminal);
    m_host.sendSignal(SIGHUP);
    EXPECT_EQ(m_host.waitForExit(), 0);
}
} // namespace
