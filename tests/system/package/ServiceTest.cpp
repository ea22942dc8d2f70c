// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The host with the restrictions of the installed service, as far as they can be applied without
// systemd.

#include "support/bus/BusClient.h"
#include "support/bus/BusUser.h"
#include "support/bus/PrivateBus.h"
#include "support/host/HostProcess.h"
#include "support/sound/ScriptedDevices.h"
#include "support/sound/SoundFiles.h"
#include "support/Text.h"
#include "system/sound/HttpServer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QUrl>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <sys/stat.h>

namespace {
constexpr int frames = 4800;

class ServiceTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!BusUser::canBeAnyone()) {
            GTEST_SKIP() << "only root can give up privileges";
        }
        m_devices.forget();
        // The service runs as another user.
        const QString sounds = QFileInfo(qEnvironmentVariable("ALSA_CONFIG_PATH")).path();
        for (const QString &folder : {m_bus.folder(), m_host.folder(), sounds}) {
            ASSERT_EQ(::chmod(QFile::encodeName(folder).constData(), 0755), 0);
        }
        for (const QString &file : QDir(sounds).entryList(QDir::Files)) {
            ASSERT_EQ(::chmod(QFile::encodeName(sounds + '/' + file).constData(), 0666), 0);
        }
        m_host.addArguments({SERVICE, m_host.program()});
        m_host.setProgram(AS_SERVICE);
        const QJsonObject player{{"mainDevice", "plain"}, {"notificationsDevice", "plain"}};
        const QJsonObject dbus{
            {"bus", m_bus.address()},
            {"sounds", QJsonObject{{"schemes", QJsonArray{"file", "http"}},
                                   {"hosts", QJsonArray{QUrl(m_server.missing()).authority()}}}}};
        m_host.setConfiguration(
            {{"modules",
              QJsonArray{"powermanager", QJsonObject{{"name", "player"}, {"config", player}},
                         "notifications", QJsonObject{{"name", "dbus"}, {"config", dbus}}}}});
        ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
        ASSERT_TRUE(m_host.waitForLog("Serving org.tavo.Model1")) << m_host.log().toStdString();
    }

    void TearDown() override
    {
        if (HasFailure()) {
            std::cout << "The host wrote:\n" << m_host.log().toStdString() << std::endl;
        }
    }

    /// Plays the sound at the path or URI. Returns whether it is heard to its end.
    bool plays(const QString &name)
    {
        m_devices.forget();
        BusClient client(m_bus.address());
        client.setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
        const QVariantHash item{{"id", name}, {"type", 0}, {"priority", 1}, {"content", name}};
        const BusCall call = client.call("Call", [&](BusWriter &writer) {
            writer.writeString("/notifications/player/enqueue"_s);
            writer.writeVariant(QVariantHash{{"notificationPlayerItem", item}});
        });
        EXPECT_EQ(call.errorMessage(), "");
        return waitFor([this] { return m_devices.heard().size() >= frames; },
                       std::chrono::seconds(20));
    }

    QString writeSoundTo(const QString &name)
    {
        QString path = m_host.folder() + '/' + name;
        writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, countingSamples(frames));
        return path;
    }

    ScriptedDevices &m_devices =
        ScriptedDevices::instance(); // the environment names their configuration
    PrivateBus m_bus{"<policy context=\"default\"><allow user=\"*\"/></policy>"};
    HostProcess m_host;
    HttpServer m_server;
};

TEST_F(ServiceTest, PlaysAFileAndStops)
{
    EXPECT_TRUE(plays(writeSoundTo("bell.wav"_s)));
    EXPECT_EQ(m_host.stop(), 0);
}

TEST_F(ServiceTest, FetchesASoundOverHttp)
{
    EXPECT_TRUE(plays(m_server.serve("bell.wav"_s, readFile(writeSoundTo("bell.wav"_s)))));
    EXPECT_THAT(m_host.log().toStdString(), testing::Not(testing::HasSubstr("ERROR")));
}
} // namespace
