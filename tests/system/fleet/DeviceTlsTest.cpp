// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"

namespace {
const Certificates &certificates()
{
    static const Certificates s_certificates;
    return s_certificates;
}

std::unique_ptr<Broker> makeBroker(const Identity &server)
{
    return std::make_unique<Broker>(certificates(), server,
                                    QStringLiteral(TAVO_SOURCE "/data/fleet/fleet.acl"));
}
} // namespace

/// A broker with mutual TLS and the shipped rules for access.
class DeviceTlsTest : public DeviceTest
{
protected:
    explicit DeviceTlsTest(const Identity &server = certificates().makeServer())
        : DeviceTest(makeBroker(server))
    {
    }

    void SetUp() override
    {
        DeviceTest::SetUp();
        m_identity = certificates().make("porch");
        setBroker(m_identity);
    }

    void adapt(MqttSettings &settings) override { identify(settings, "commander"); }

    static void identify(MqttSettings &settings, const QString &name)
    {
        const Identity identity = certificates().make(name);
        settings.caFile = certificates().authority();
        settings.certificateFile = identity.certificate;
        settings.keyFile = identity.key;
    }

    void setBroker(const Identity &identity, QJsonObject more = {})
    {
        more.insert("url", QStringLiteral("mqtts://127.0.0.1:%1").arg(m_broker->port()));
        if (!more.contains("ca")) {
            more.insert("ca", certificates().authority());
        }
        more.insert("certificate", identity.certificate);
        more.insert("key", identity.key);
        more.insert("reconnect", QJsonObject{{"min", 10}, {"max", 100}});
        set("broker", more);
    }

    Identity m_identity;
};

TEST_F(DeviceTlsTest, ADeviceWithACertificateIsCalledAndAnswers)
{
    startHost();
    startDevice();
    EXPECT_THAT(m_device->error(), testing::Not(testing::HasSubstr("may not write")));
    MqttMessage message;
    message.topic = "tavo/v1/group/all/call";
    message.payload =
        R"({"id":"a","from":"commander","call":"show","title":"x","everywhere":true})";
    ASSERT_GE(m_controller->publish(message), 0);
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/answer/commander", R"("id":"a","shown":true)"));
    closeMessage();
    EXPECT_TRUE(waitForMessage("tavo/v1/group/all/end", R"("id":"a")"));
}

TEST_F(DeviceTlsTest, WhatAPersonEndsOnAnotherDeviceEndsHere)
{
    startHost();
    startDevice();
    MqttMessage message;
    message.topic = "tavo/v1/group/all/call";
    message.payload =
        R"({"id":"a","from":"commander","call":"show","title":"x","timeout":0,"everywhere":true})";
    ASSERT_GE(m_controller->publish(message), 0);
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/answer/commander", R"("id":"a","shown":true)"));
    MqttSettings settings = MqttSettings::fromUrl(m_broker->uri());
    identify(settings, "hall");
    MqttConnection hall(settings);
    hall.start();
    ASSERT_TRUE(waitFor([&] { return hall.isConnected(); }, s_timeout));
    message.topic = "tavo/v1/group/all/end";
    message.payload = R"({"id":"a","device":"hall","end":"dismissed","time":0})";
    ASSERT_GE(hall.publish(message), 0);
    EXPECT_TRUE(waitForEvent(R"("end":"closed","id":"a")"));
}

TEST_F(DeviceTlsTest, TheBrokerMayNameClientsByTheirCertificates)
{
    m_broker->setConfiguration(m_broker->configuration() + "use_username_as_clientid true\n");
    m_broker->stop();
    m_broker->start();
    startHost();
    startDevice();
    MqttMessage message;
    message.topic = "tavo/v1/porch/call";
    message.payload = R"({"id":"a","from":"commander","call":"show","title":"x"})";
    ASSERT_GE(m_controller->publish(message), 0);
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/answer/commander", R"("id":"a","shown":true)"));
}

TEST_F(DeviceTlsTest, ADeviceWithoutTheRightCertificateIsNotConnected)
{
    const Certificates others;
    setBroker(others.make("porch"));
    launchDevice();
    EXPECT_TRUE(waitForError("no connection to 127.0.0.1"));
    EXPECT_EQ(count("tavo/v1/porch/online", "1"), 0);
}

TEST_F(DeviceTlsTest, ACertificateOfAnotherDeviceIsNamedAsTheReason)
{
    startHost();
    set("device", "hall");
    launchDevice();
    ASSERT_TRUE(waitForError("no connection to 127.0.0.1"));
    // Said before the loss of the connection, the first time.
    const std::string before =
        m_device->error().substr(0, m_device->error().find("no connection to"));
    EXPECT_THAT(before,
                testing::HasSubstr("Not authorized. Is the certificate or user that of hall"));
}

TEST_F(DeviceTlsTest, ABrokerOfAnotherAuthorityIsRefused)
{
    const Certificates others;
    for (const QString &ca : {others.authority(), QString()}) {
        setBroker(m_identity, {{"ca", ca}});
        launchDevice();
        EXPECT_TRUE(waitForError("certificate verify failed"));
        EXPECT_THAT(m_device->error(), testing::Not(testing::HasSubstr("QFSFileEngine")));
    }
}

TEST_F(DeviceTlsTest, NoUnencryptedConnectionIsMadeInPlaceOfAnEncryptedOne)
{
    const Broker plain;
    // With an authority, and with those of the system.
    for (const QString &ca : {certificates().authority(), QString()}) {
        set("broker", QJsonObject{{"url", QStringLiteral("mqtts://127.0.0.1:%1").arg(plain.port())},
                                  {"ca", ca},
                                  {"reconnect", QJsonObject{{"min", 10}, {"max", 100}}}});
        launchDevice();
        ASSERT_TRUE(waitForError("no connection to 127.0.0.1"));
        EXPECT_THAT(m_device->error(), testing::Not(testing::HasSubstr("tavo-fleet: connected")));
    }
}

TEST_F(DeviceTlsTest, ACertificateThatIsReplacedIsUsedForTheNextConnection)
{
    const Certificates others;
    const Identity wrong = others.make("porch");
    const QString certificate = m_folder.filePath("device.crt");
    const QString key = m_folder.filePath("device.key");
    ASSERT_TRUE(QFile::copy(wrong.certificate, certificate));
    ASSERT_TRUE(QFile::copy(wrong.key, key));
    setBroker({certificate, key});
    launchDevice();
    ASSERT_TRUE(waitForError("no connection to 127.0.0.1"));
    ASSERT_TRUE(QFile::remove(certificate) && QFile::remove(key));
    EXPECT_TRUE(QFile::copy(m_identity.certificate, certificate));
    EXPECT_TRUE(QFile::copy(m_identity.key, key));
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/online", "1"));
}

/// A broker whose certificate is for another host.
class DeviceOtherHostTest : public DeviceTlsTest
{
protected:
    DeviceOtherHostTest()
        : DeviceTlsTest(certificates().make("elsewhere", {"DNS:elsewhere"}))
    {
    }
};

TEST_F(DeviceOtherHostTest, ACertificateForAnotherHostIsRefused)
{
    launchDevice();
    EXPECT_TRUE(waitForError("certificate verify failed"));
}

class DeviceExpiredTest : public DeviceTlsTest
{
protected:
    DeviceExpiredTest()
        : DeviceTlsTest(certificates().makeServer(Certificates::expired))
    {
    }
};

TEST_F(DeviceExpiredTest, AnExpiredCertificateIsRefused)
{
    launchDevice();
    EXPECT_TRUE(waitForError("certificate verify failed"));
}

/// A broker that wants a password.
class DevicePasswordTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        Program program("mosquitto_passwd");
        ASSERT_EQ(program.run({"-b", "-c", m_folder.filePath("passwords"), "porch", "secret"}), 0);
        m_broker->setConfiguration(QStringLiteral("allow_anonymous true\npassword_file %1\n")
                                       .arg(m_folder.filePath("passwords")));
        m_broker->stop();
        m_broker->start();
        DeviceTest::SetUp();
        set("broker", QJsonObject{{"url", m_broker->uri()},
                                  {"user", "porch"},
                                  {"passwordFile", m_folder.filePath("password")},
                                  {"reconnect", QJsonObject{{"min", 10}, {"max", 100}}}});
    }

    void write(const QString &name, const QByteArray &content)
    {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
};

TEST_F(DevicePasswordTest, APasswordIsReadFromItsFileForEachConnection)
{
    launchDevice();
    ASSERT_TRUE(waitForError("password: No such file"));
    write("password", "wrong\n");
    ASSERT_TRUE(waitForError("the broker says: Not authorized"));
    write("password", "secret\n");
    EXPECT_TRUE(waitForMessage("tavo/v1/porch/online", "1"));
}
