// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/protocol/FleetEvent.h"
#include "SimulatedDevice.h"
#include "support/broker/Broker.h"
#include "support/EventLoop.h"
#include "support/program/Program.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

namespace {
// As in docs/cli.md.
constexpr int exitGood = 0;
constexpr int exitRefused = 1;
constexpr int exitUsage = 64;
constexpr int exitUnavailable = 69;
constexpr int exitTimedOut = 75;

std::optional<FleetAnswer> error(const FleetCall & /*call*/)
{
    FleetAnswer answer;
    answer.kind = FleetAnswer::Kind::Error;
    answer.error = "not allowed\x1b[2J";
    return answer;
}
} // namespace

/// tavo fleet, and devices that the test plays.
class FleetCommandTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_tavo.setEnvironment("TAVO_BROKER", m_broker.uri());
        m_tavo.setEnvironment("XDG_CONFIG_HOME", m_folder.path());
    }

    void TearDown() override
    {
        if (HasFailure()) {
            std::cout << "The program wrote:\n"
                      << m_tavo.output() << m_tavo.error() << "The broker wrote:\n"
                      << m_broker.log().toStdString() << std::endl;
        }
    }

    std::unique_ptr<SimulatedDevice> device(const QString &name,
                                            const QStringList &groups = {"site"})
    {
        auto device =
            std::make_unique<SimulatedDevice>(name, MqttSettings::fromUrl(m_broker.uri()), groups);
        EXPECT_TRUE(waitFor([&] { return device->isReady(); }));
        return device;
    }

    int run(const QStringList &arguments)
    {
        m_tavo.start(QStringList{"fleet"} + arguments);
        return m_tavo.waitForExit();
    }

    QJsonObject json() const
    {
        return QJsonDocument::fromJson(QByteArray::fromStdString(m_tavo.output())).object();
    }

    QTemporaryDir m_folder;
    Broker m_broker;
    Program m_tavo{QStringLiteral(TAVO_PROGRAM)};
};

TEST_F(FleetCommandTest, PrintsTheAnswerOfEachDeviceOfAGroup)
{
    const auto hall = device("hall");
    const auto porch = device("porch");
    const auto shed = device("shed", {"garden"});
    EXPECT_EQ(
        run({"show", "--group", "site", "Water", "Room 301", "--priority", "urgent", "--timeout",
             "0", "--action", "ok=Seen", "--sound", "alarm", "--everywhere", "--id", "leak-7"}),
        exitGood);
    EXPECT_THAT(m_tavo.lines(), UnorderedElementsAre("hall\tshown", "porch\tshown"));
    ASSERT_EQ(hall->calls().size(), 1U);
    const FleetCall call = hall->calls().front();
    EXPECT_EQ(call.id, "leak-7");
    EXPECT_EQ(call.title, "Water");
    EXPECT_EQ(call.text, "Room 301");
    EXPECT_EQ(call.priority, 3);
    EXPECT_EQ(call.timeoutMs, 0);
    EXPECT_EQ(call.sound, "alarm");
    ASSERT_EQ(call.actions.size(), 1);
    EXPECT_EQ(call.actions[0].label, "Seen");
    EXPECT_TRUE(call.isEverywhere);
    EXPECT_TRUE(shed->calls().empty());
}

TEST_F(FleetCommandTest, AnErrorOfADeviceIsItsOwn)
{
    const auto hall = device("hall");
    const auto porch = device("porch");
    porch->setReply(error);
    EXPECT_EQ(run({"sound", "--device", "hall", "--device", "porch", "bell", "--json"}),
              exitRefused);
    EXPECT_EQ(json()["answered"].toInt(), 2);
    const QJsonArray devices = json()["devices"].toArray();
    ASSERT_EQ(devices.size(), 2);
    EXPECT_TRUE(devices[0].toObject()["shown"].toBool());
    EXPECT_EQ(devices[1].toObject()["error"].toString(), "not allowed\x1b[2J");
    EXPECT_EQ(run({"say", "--group", "all", "Hello"}), exitRefused);
    EXPECT_THAT(m_tavo.lines(),
                UnorderedElementsAre("hall\tshown", "porch\terror: not allowed\\x1b[2J"));
}

TEST_F(FleetCommandTest, SaysWhoIsAbsentWhenTheTimeIsUp)
{
    const auto hall = device("hall");
    const auto porch = device("porch");
    const auto shed = device("shed");
    shed->setReply([](const FleetCall &) { return std::nullopt; });
    porch->leave();
    EXPECT_EQ(run({"ping", "--group", "site", "--reply-timeout", "0.7"}), exitTimedOut);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("hall\tshown", "porch\tabsent", "shed\tno answer"));
    EXPECT_THAT(m_tavo.error(), HasSubstr("2 of 3 devices did not answer in time"));
}

TEST_F(FleetCommandTest, RepeatsACallUntilItIsAnswered)
{
    const auto hall = device("hall");
    hall->setReply([&](const FleetCall &) -> std::optional<FleetAnswer> {
        constexpr std::size_t attempts = 2;
        return hall->calls().size() < attempts ? std::nullopt : std::optional(FleetAnswer());
    });
    EXPECT_EQ(run({"call", "--device", "hall", "/player/mainAudio/volume", "0.4"}), exitGood);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("hall\tdone"));
    ASSERT_EQ(hall->calls().size(), 2U);
    EXPECT_EQ(hall->calls()[0].id, hall->calls()[1].id);
    EXPECT_EQ(hall->calls()[1].value, QJsonValue(0.4));
}

TEST_F(FleetCommandTest, CallsADeviceThatComesLater)
{
    // The first call reaches only this one.
    MqttConnection witness(MqttSettings::fromUrl(m_broker.uri()));
    int count = 0;
    QObject::connect(&witness, &MqttConnection::received, [&count] { ++count; });
    bool isConnected = false;
    QObject::connect(&witness, &MqttConnection::connected, [&isConnected] { isConnected = true; });
    witness.subscribe(FleetTopics::call("hall"));
    witness.start();
    ASSERT_TRUE(waitFor([&] { return isConnected; }));
    m_tavo.start({"fleet", "show", "--device", "hall", "Water"});
    ASSERT_TRUE(waitFor([&] { return count > 0; }));
    const auto hall = device("hall");
    EXPECT_EQ(m_tavo.waitForExit(), exitGood);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("hall\tshown"));
}

TEST_F(FleetCommandTest, CallsAgainWhenTheBrokerIsBack)
{
    const auto hall = device("hall");
    hall->setReply([&](const FleetCall &) -> std::optional<FleetAnswer> {
        return m_broker.log().count(" running\n") < 2 ? std::nullopt : std::optional(FleetAnswer());
    });
    m_tavo.start({"fleet", "call", "--device", "hall", "--reply-timeout", "40", "/a"});
    ASSERT_TRUE(waitFor([&] { return !hall->calls().empty(); }));
    m_broker.kill();
    m_broker.start();
    EXPECT_EQ(m_tavo.waitForExit(), exitGood);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("hall\tdone"));
}

TEST_F(FleetCommandTest, ListsDevices)
{
    const auto hall = device("hall");
    const auto porch = device("porch", {"site", "doors"});
    porch->publish(FleetTopics::state("porch", "display"), R"({"shown":true,"title":"Old"})", true);
    hall->publish(FleetTopics::state("hall", "display"),
                  R"({"shown":true,"title":"Water","text":"Room 301"})", true);
    hall->publish(FleetTopics::state("hall", "sound"), R"({"sounding":true})", true);
    porch->leave();
    ASSERT_TRUE(waitFor([&] { return hall->isIdle(); }));
    EXPECT_EQ(run({"list"}), exitGood);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("hall\tonline\tsite\tshows Water: Room 301, sounding",
                                            "porch\taway\tsite,doors\t"));
    EXPECT_EQ(run({"list", "--group", "doors", "--json"}), exitGood);
    const QJsonArray devices = json()["devices"].toArray();
    ASSERT_EQ(devices.size(), 1);
    EXPECT_EQ(devices[0].toObject()["device"].toString(), "porch");
    EXPECT_FALSE(devices[0].toObject()["online"].toBool());
}

TEST_F(FleetCommandTest, WatchPrintsWhatDevicesSay)
{
    const auto hall = device("hall");
    m_tavo.start({"fleet", "watch", "--json"});
    ASSERT_TRUE(m_tavo.waitForOutput("online"));
    FleetEvent event;
    event.id = "leak-7";
    event.device = "hall";
    event.end = FleetEvent::End::Action;
    event.action = "ok";
    hall->publish(FleetTopics::event("hall"), event.toJson());
    ASSERT_TRUE(m_tavo.waitForOutput("leak-7"));
    const QJsonObject line =
        QJsonDocument::fromJson(QByteArray::fromStdString(m_tavo.lines().back())).object();
    EXPECT_EQ(line["device"].toString(), "hall");
    EXPECT_EQ(line["subject"].toString(), "event");
    EXPECT_EQ(line["value"].toObject()["action"].toString(), "ok");
    m_tavo.sendSignal(SIGINT);
    EXPECT_EQ(m_tavo.waitForExit(), exitGood);
}

TEST_F(FleetCommandTest, SaysWhatIsWrongWithTheArguments)
{
    const std::initializer_list<std::pair<QStringList, const char *>> cases{
        {{"show", "Water"}, "--device or --group"},
        {{"show", "--device", "a/b", "Water"}, "can't be the name"},
        {{"show", "--device", "hall"}, "title"},
        {{"call", "--device", "hall", "/a", "{"}, "not JSON"},
        {{"ring"}, "must be list"},
        {{"show", "--device", "hall", "Water", "--at", "07:00"}, "show takes no --at"},
        {{"sound", "--device", "hall", "bell", "--everywhere"}, "sound takes no --everywhere"},
        {{"sound", "--device", "hall", "bell", "-t", "7"}, "sound takes no --timeout"},
        {{"sound", "--device", "hall", "bell", "--action", "a=A"}, "sound takes no --action"},
        {{"cancel", "--device", "hall", "leak-7", "--everywhere"}, "cancel takes no --everywhere"},
        {{"list", "--at", "07:00"}, "list takes no --at"},
        {{"list", "hall"}, "list takes no ARGUMENT"},
        {{"say", "--device", "hall", "Hello", "World"}, "say takes no TEXT|JSON"},
        {{"sound", "--device", "hall", "bell", "--at", "2d"}, "more than a day from now"},
        {{"list", "--broker", "http://localhost"}, "must be mqtts://"},
        {{"list", "--config", "/nonexistent"}, "/nonexistent"}};
    for (const auto &[arguments, reason] : cases) {
        EXPECT_EQ(run(arguments), exitUsage) << arguments.join(' ').toStdString();
        EXPECT_THAT(m_tavo.error(), HasSubstr(reason));
    }
}

TEST_F(FleetCommandTest, SaysThatThereIsNoBroker)
{
    m_broker.stop();
    EXPECT_EQ(run({"list"}), exitUnavailable);
    EXPECT_THAT(m_tavo.error(), HasSubstr("can't be reached"));
    EXPECT_EQ(run({"show", "--group", "site", "Water", "--reply-timeout", "0.5"}), exitUnavailable);
}

TEST_F(FleetCommandTest, ReadsTheBrokerFromAFile)
{
    const Certificates certificates;
    Broker broker(certificates, certificates.makeServer());
    const Identity commander = certificates.make("commander");
    QFile file(m_folder.filePath("fleet.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        QJsonDocument(QJsonObject{{"name", "hall"},
                                  {"broker", QJsonObject{{"url", broker.uri()},
                                                         {"ca", certificates.authority()},
                                                         {"certificate", commander.certificate},
                                                         {"key", commander.key}}}})
            .toJson());
    file.close();
    m_tavo.setEnvironment("TAVO_BROKER", "");
    EXPECT_EQ(run({"list", "--config", file.fileName()}), exitGood);
    EXPECT_THAT(m_tavo.error(), HasSubstr("No devices"));
    EXPECT_EQ(run({"list", "--config", file.fileName(), "--ca", "/etc/ssl/certs/none.pem"}),
              exitUnavailable);
}

TEST_F(FleetCommandTest, ShowsItsProgressOnATerminal)
{
    const auto hall = device("hall");
    hall->setReply([](const FleetCall &) { return std::nullopt; });
    Program script("script");
    script.setEnvironment("TERM", "xterm");
    script.setEnvironment("TAVO_BROKER", m_broker.uri());
    const QString command =
        QStringLiteral(TAVO_PROGRAM) + " fleet ping --group site --reply-timeout 1";
    EXPECT_EQ(script.run({"-q", "-e", "-c", command, "/dev/null"}), exitTimedOut);
    EXPECT_THAT(script.output(), HasSubstr("0 of 1 devices have answered"));
}

TEST_F(FleetCommandTest, SaysThatTheBrokerRefusesTheCall)
{
    QFile access(m_folder.filePath("access"));
    ASSERT_TRUE(access.open(QIODevice::WriteOnly));
    access.write("topic read tavo/v1/#\n");
    access.close();
    m_broker.setConfiguration(Broker::openToAll() + "acl_file " + access.fileName() + "\n");
    m_broker.stop();
    m_broker.start();
    EXPECT_EQ(run({"show", "--group", "site", "Water"}), exitRefused);
    EXPECT_THAT(
        m_tavo.error(),
        HasSubstr("a call to tavo/v1/group/site/call is refused: the broker says: Not authorized"));
}

TEST_F(FleetCommandTest, WaitsUntilASoundStarts)
{
    const auto hall = device("hall");
    hall->setReply([&](const FleetCall &call) -> std::optional<FleetAnswer> {
        const auto wait = int(call.at - QDateTime::currentMSecsSinceEpoch());
        QTimer::singleShot(qMax(0, wait), hall.get(), [&hall, call] {
            FleetAnswer answer;
            answer.id = call.id;
            answer.device = "hall";
            answer.kind = FleetAnswer::Kind::Sounding;
            hall->publish(FleetTopics::answer("hall", call.from), answer.toJson());
        });
        return {};
    });
    EXPECT_EQ(run({"sound", "--device", "hall", "bell", "--at", "2s", "--reply-timeout", "1.9"}),
              exitGood);
    EXPECT_THAT(m_tavo.lines(), ElementsAre("hall\tsounding"));
}

TEST_F(FleetCommandTest, SaysWhatACancelHasEnded)
{
    const auto hall = device("hall");
    const auto porch = device("porch");
    const auto reply = [](bool hasEnded) {
        return [hasEnded](const FleetCall &) {
            FleetAnswer answer;
            answer.value = hasEnded;
            return std::optional(answer);
        };
    };
    hall->setReply(reply(true));
    porch->setReply(reply(false));
    EXPECT_EQ(run({"cancel", "--group", "site", "leak-7"}), exitGood);
    EXPECT_THAT(m_tavo.lines(), UnorderedElementsAre("hall\tended", "porch\tnothing to end"));
    EXPECT_EQ(run({"cancel", "--device", "porch", "leak-7"}), exitRefused);
}

TEST_F(FleetCommandTest, SaysThatItMayNotRead)
{
    const Certificates certificates;
    const Broker broker(certificates, certificates.makeServer(),
                        QStringLiteral(TAVO_SOURCE "/data/fleet/fleet.acl"));
    const auto list = [&](const QString &user) {
        const Identity identity = certificates.make(user);
        return run({"list", "--broker", broker.uri(), "--ca", certificates.authority(),
                    "--certificate", identity.certificate, "--key", identity.key});
    };
    EXPECT_EQ(list("hall"), exitRefused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("this user may not read tavo/v1/#"));
    EXPECT_EQ(list("commander"), exitGood);
    EXPECT_THAT(m_tavo.error(), HasSubstr("No devices"));
}
