// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/Text.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fleet/FleetConfiguration.h>
#include <stdexcept>

using testing::HasSubstr;

class FleetConfigurationTest : public testing::Test
{
protected:
    FleetConfiguration read(const QByteArray &json)
    {
        QFile file(m_file);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        return FleetConfiguration::fromFile(m_file);
    }

    /// With a broker and a name.
    FleetConfiguration with(const QByteArray &more)
    {
        return read(R"({"device":"porch","broker":{"url":"mqtts://b"},)" + more + "}");
    }

    std::string error(const std::function<void()> &action)
    {
        try {
            action();
        } catch (const std::runtime_error &error) {
            return error.what();
        }
        return "none";
    }

    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath("fleet.json");
};

TEST_F(FleetConfigurationTest, MistakesNameFileAndKey)
{
    EXPECT_THAT(error([&] { read("{}"); }), HasSubstr("fleet.json: broker.url"));
    EXPECT_THAT(error([&] { with(R"("groups":["a/b"])"); }), HasSubstr("groups"));
    EXPECT_THAT(error([&] { with(R"("allow":{"calls":["dance"]})"); }),
                HasSubstr("allow.calls: dance"));
    EXPECT_THAT(error([&] { with(R"("allow":{"paths":["a"]})"); }), HasSubstr("allow.paths"));
    EXPECT_THAT(error([&] { with(R"("allow":{"maxPriority":"Huge"})"); }),
                HasSubstr("allow.maxPriority"));
    EXPECT_THAT(error([&] { with(R"("allow":{"sounds":{"schemes":["file"]}})"); }),
                HasSubstr("allow.sounds.schemes"));
    EXPECT_THAT(error([&] { with(R"("discovery":{"prefix":"a/#"})"); }),
                HasSubstr("discovery.prefix"));
    EXPECT_THAT(error([&] { with(R"("other":1)"); }), HasSubstr("other"));
    EXPECT_THAT(error([&] { read(R"({"device":"group","broker":{"url":"mqtts://b"}})"); }),
                HasSubstr("device"));
}

TEST_F(FleetConfigurationTest, EncryptionIsNeverLeftOutByMistake)
{
    const auto broker = [this](const QByteArray &keys) {
        return read(R"({"device":"porch","broker":{)" + keys + "}}").broker;
    };
    EXPECT_TRUE(broker(R"("url":"mqtts://b")").isEncrypted);
    EXPECT_EQ(broker(R"("url":"mqtts://b")").port, 8883);
    EXPECT_FALSE(broker(R"("url":"mqtt://b:1884")").isEncrypted);
    for (const char *keys :
         {R"("url":"b")", R"("url":"tcp://b")", R"("url":"mqtts://u:p@b")",
          R"("url":"mqtts://b/x")", R"("url":"mqtt://b","ca":"/ca.crt")",
          R"("url":"mqtts://b","certificate":"/c")", R"("url":"mqtts://b","passwordFile":"/p")",
          R"("url":"mqtts://")", R"("url":"mqtts://b:0")"}) {
        EXPECT_THAT(error([&] { broker(keys); }), HasSubstr("broker.")) << keys;
    }
}

TEST_F(FleetConfigurationTest, AFileWithoutAFolderIsACredential)
{
    qputenv("CREDENTIALS_DIRECTORY", "/run/credentials/fleet");
    const auto configuration = read(R"({"device":"porch","broker":{"url":"mqtts://b","ca":"ca.crt",
        "certificate":"/etc/c.crt","key":"c.key"}})");
    qunsetenv("CREDENTIALS_DIRECTORY");
    EXPECT_EQ(configuration.broker.caFile, "/run/credentials/fleet/ca.crt");
    EXPECT_EQ(configuration.broker.certificateFile, "/etc/c.crt");
    EXPECT_EQ(configuration.broker.keyFile, "/run/credentials/fleet/c.key");
}

TEST_F(FleetConfigurationTest, APathIsAllowedWithAllBelowIt)
{
    const auto permissions = with(R"("allow":{"calls":["call"],"paths":["/player/"]})").permissions;
    const auto isAllowed = [&permissions](const QString &path) {
        FleetCall call;
        call.kind = FleetCall::Kind::Call;
        call.path = path;
        return !permissions.refusal(call);
    };
    EXPECT_TRUE(isAllowed("/player"));
    EXPECT_TRUE(isAllowed("/player/mainAudio/volume"));
    EXPECT_TRUE(isAllowed("//player//mainAudio"));
    EXPECT_FALSE(isAllowed("/players"));
    EXPECT_FALSE(isAllowed("/"));
    EXPECT_FALSE(isAllowed("/notifications/player/enqueue"));
}

TEST_F(FleetConfigurationTest, APriorityIsAtMostTheAllowedOne)
{
    const auto permissions = with(R"("allow":{"maxPriority":"high"})").permissions;
    EXPECT_EQ(permissions.allowedPriority(3), 2);
    EXPECT_EQ(permissions.allowedPriority(0), 0);
}

TEST_F(FleetConfigurationTest, TheInstalledFilesAreGood)
{
    for (const char *file : {"data/fleet/tavo-fleet.json", "packaging/fleet.json"}) {
        EXPECT_EQ(
            error([&] { FleetConfiguration::fromFile(QStringLiteral(TAVO_SOURCE "/") + file); }),
            "none");
    }
}

TEST_F(FleetConfigurationTest, WhatIsMissingIsNamedWithItsKey)
{
    const auto missing = [this](const QByteArray &folder) {
        return read(R"({"device":"porch",
                        "broker":{"url":"mqtts://b","ca":"fleet_ca.crt",
                                  "certificate":"/nowhere/c.crt","key":")" +
                    m_file.toUtf8() + R"("},"allow":{"sounds":{"folder":")" + folder + "\"}}}")
            .missing(m_file);
    };
    const QString folder = m_folder.path();
    EXPECT_EQ(missing("/nowhere"),
              (QStringList{m_file + ": broker.ca: there is no file " + folder + "/fleet/ca.crt",
                           m_file + ": broker.certificate: there is no file /nowhere/c.crt",
                           m_file + ": allow.sounds.folder: there is no folder /nowhere"}));
    // As the service has its credentials.
    ASSERT_TRUE(QDir(folder).mkdir("fleet") && QFile::copy(m_file, folder + "/fleet/ca.crt"));
    EXPECT_EQ(missing(folder.toUtf8()).size(), 1);
}
