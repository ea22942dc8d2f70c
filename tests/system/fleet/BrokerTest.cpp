// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/broker/Broker.h"

#include "support/program/Program.h"

#include <QFile>
#include <QHash>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {
QString shipped(const char *name)
{
    return QStringLiteral(TAVO_SOURCE "/data/fleet/") + QLatin1String(name);
}

/// The shipped configuration with the files of the test.
QString shippedConfiguration(const Certificates &certificates, const Identity &server)
{
    QFile file(shipped("mosquitto.conf"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QString text = QString::fromUtf8(file.readAll());
    const std::initializer_list<std::pair<const char *, QString>> files{
        {"listener 8883", {}},
        {"/etc/mosquitto/certs/fleet-ca.crt", certificates.authority()},
        {"/etc/mosquitto/certs/broker.crt", server.certificate},
        {"/etc/mosquitto/certs/broker.key", server.key},
        {"acl_file /etc/mosquitto/fleet.acl", "acl_file " + shipped("fleet.acl")}};
    for (const auto &[before, after] : files) {
        // The last ones are those in use; the first may be in a comment.
        const int at = text.lastIndexOf(QLatin1String(before));
        EXPECT_GE(at, 0) << before;
        text.replace(at, int(qstrlen(before)), after);
    }
    return text;
}
} // namespace

/// The broker with the shipped configuration, and what plain MQTT clients can do there.
class FleetBrokerTest : public testing::Test
{
protected:
    QStringList arguments(const QString &user)
    {
        if (!m_identities.contains(user)) {
            m_identities.insert(user, m_certificates.make(user));
        }
        const Identity identity = m_identities.value(user);
        return {"-h",       "127.0.0.1",
                "-p",       QString::number(m_broker.port()),
                "-V",       "5",
                "-q",       "1",
                "--cafile", m_certificates.authority(),
                "--cert",   identity.certificate,
                "--key",    identity.key};
    }

    /// Publishes as that user. The broker's answer is in the program's error output.
    int publish(const QString &user, const QString &topic, const QString &payload = "x")
    {
        return m_publisher.run(arguments(user) + QStringList{"-t", topic, "-m", payload});
    }

    /// Begins to collect the messages that match the filter. Ends after that number.
    void subscribe(Program &program, const QString &user, const QString &filter, int count)
    {
        program.start(QStringList{"-oL", "mosquitto_sub"} + arguments(user) +
                      QStringList{"-t", filter, "-C", QString::number(count), "-F", "%t %p", "-d"});
        // The program says so, with -d, when the broker has granted it.
        ASSERT_TRUE(program.waitForOutput("Subscribed"));
    }

    /// The lines that are no remarks of the program's own.
    static std::vector<std::string> messages(const Program &program)
    {
        std::vector<std::string> lines;
        for (const std::string &line : program.lines()) {
            if (line.rfind("tavo/", 0) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    const Certificates m_certificates;
    QHash<QString, Identity> m_identities; ///< by user
    Broker m_broker{shippedConfiguration(m_certificates, m_certificates.makeServer())};
    Program m_publisher{"mosquitto_pub"};
    // Its lines at once, not when a buffer is full.
    Program m_subscriber{"stdbuf"};
};

TEST_F(FleetBrokerTest, ADeviceSpeaksOnlyForItself)
{
    subscribe(m_subscriber, "commander", "tavo/v1/#", 8);
    const QStringList foreign{"tavo/v1/hall/online",
                              "tavo/v1/hall/info",
                              "tavo/v1/hall/state/sound",
                              "tavo/v1/hall/answer/commander",
                              "tavo/v1/hall/event",
                              "tavo/v1/hall/call",
                              "tavo/v1/group/all/call",
                              "tavo/v1/porch/answer/a/b",
                              "tavo/v1/porch",
                              "tavo/v1/porchx/online",
                              "tavo/v1//online",
                              "tavo/v1/porch/online/more",
                              "other"};
    for (const QString &topic : foreign) {
        publish("porch", topic, "stolen");
    }
    // In order, so these would come after what was stolen.
    const QStringList own{"tavo/v1/porch/online",
                          "tavo/v1/porch/info",
                          "tavo/v1/porch/state/sound",
                          "tavo/v1/porch/state/display",
                          "tavo/v1/porch/answer/commander",
                          "tavo/v1/porch/event",
                          "tavo/v1/porch/call",
                          "tavo/v1/group/all/end"};
    for (const QString &topic : own) {
        publish("porch", topic, "own");
    }
    EXPECT_EQ(m_subscriber.waitForExit(), 0);
    EXPECT_THAT(messages(m_subscriber),
                ElementsAre("tavo/v1/porch/online own", "tavo/v1/porch/info own",
                            "tavo/v1/porch/state/sound own", "tavo/v1/porch/state/display own",
                            "tavo/v1/porch/answer/commander own", "tavo/v1/porch/event own",
                            "tavo/v1/porch/call own", "tavo/v1/group/all/end own"));
}

TEST_F(FleetBrokerTest, ADeviceHearsOnlyWhatIsCalledToIt)
{
    subscribe(m_subscriber, "porch", "tavo/v1/#", 2);
    publish("hall", "tavo/v1/hall/state/display", "private");
    publish("commander", "tavo/v1/hall/call", "private");
    publish("commander", "tavo/v1/porch/call", "one");
    publish("commander", "tavo/v1/group/all/call", "all");
    EXPECT_EQ(m_subscriber.waitForExit(), 0);
    EXPECT_THAT(messages(m_subscriber),
                ElementsAre("tavo/v1/porch/call one", "tavo/v1/group/all/call all"));
}

TEST_F(FleetBrokerTest, ADeviceThatIsNamedLikeTheGroupsCanDoNothing)
{
    subscribe(m_subscriber, "commander", "tavo/v1/#", 1);
    publish("group", "tavo/v1/group/answer/call", "stolen");
    publish("group", "tavo/v1/group/call", "stolen");
    publish("porch", "tavo/v1/porch/online", "own");
    EXPECT_EQ(m_subscriber.waitForExit(), 0);
    EXPECT_THAT(messages(m_subscriber), ElementsAre("tavo/v1/porch/online own"));
}

TEST_F(FleetBrokerTest, ClientsNeedACertificateOfTheAuthority)
{
    const QStringList target{"-h", "127.0.0.1", "-p", QString::number(m_broker.port()),
                             "-V", "5",         "-t", "tavo/v1/porch/online",
                             "-m", "1"};
    EXPECT_NE(m_publisher.run(target), 0) << "plain text";
    EXPECT_NE(m_publisher.run(target + QStringList{"--cafile", m_certificates.authority()}), 0)
        << "no certificate";
    const Certificates others;
    const Identity stranger = others.make("porch");
    EXPECT_NE(m_publisher.run(target + QStringList{"--cafile", m_certificates.authority(), "--cert",
                                                   stranger.certificate, "--key", stranger.key}),
              0)
        << "a stranger";
    const Identity old = m_certificates.make("porch", {}, Certificates::expired);
    EXPECT_NE(m_publisher.run(target + QStringList{"--cafile", m_certificates.authority(), "--cert",
                                                   old.certificate, "--key", old.key}),
              0)
        << "expired";
    EXPECT_EQ(publish("porch", "tavo/v1/porch/online"), 0);
}
