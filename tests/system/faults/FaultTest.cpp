// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"

#include "support/EventLoop.h"

#include <QFile>

#include <sndfile.h>

#include <iostream>

namespace {

constexpr std::chrono::seconds timeout{20};

} // namespace

FaultTest::FaultTest()
{
    m_devices.forget();
    m_host.addArguments({"--module-path", TAVO_TEST_MODULES});
}

void FaultTest::TearDown()
{
    if (HasFailure()) {
        // Only the end, since some hosts log a lot.
        constexpr int maxLength = 20000;
        std::cout << "The host wrote:\n"
                  << m_host.log().right(maxLength).toStdString() << std::endl;
    }
}

void FaultTest::start(const QJsonObject &playerConfig, const QJsonObject &hostConfig)
{
    startModules(
        {"powermanager", playerModule(playerConfig), "notifications", m_requester.module()},
        hostConfig);
}

void FaultTest::startModules(const QJsonArray &modules, const QJsonObject &hostConfig)
{
    QJsonObject configuration = hostConfig;
    configuration.insert("modules", modules);
    m_host.setConfiguration(configuration);
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    m_requester.watchServices();
    // A reply shows that all modules are idle.
    m_requester.cancel("nobody");
    ASSERT_EQ(m_requester.answer(), "Invalid notification sound id to stop");
    noteState();
}

QJsonObject FaultTest::playerModule(QJsonObject config)
{
    for (const char *device : {"main", "notifications"}) {
        const QString key = QString(device) + "Device";
        if (!config.contains(key)) {
            config.insert(key, "plain");
        }
    }
    return {{"name", "player"}, {"config", config}};
}

QJsonObject FaultTest::standIn(const QJsonObject &config)
{
    return {{"name", "services"}, {"library", "stand_in"}, {"config", config}};
}

void FaultTest::letAnswer(const QString &kind)
{
    m_requester.invoke("/standIn/services/answer", {{"string", kind}});
    EXPECT_EQ(m_requester.answer(), "");
}

void FaultTest::expectAsGoodAsNew()
{
    expectSettled();
    expectPlays("afterwards");
    expectSettled();
}

void FaultTest::expectSettled()
{
    EXPECT_TRUE(m_requester.waitForQuiet());
    EXPECT_TRUE(waitForSettled(m_host.processId(), m_before))
        << "now " << ProcessState::of(m_host.processId()) << ", before " << m_before;
}

void FaultTest::expectPlays(const QString &id)
{
    constexpr int lengthMs = 50;
    m_devices.forget();
    m_requester.enqueue(fileItem(id, soundFile(id + ".wav", lengthMs)));
    EXPECT_EQ(m_requester.answer(), "");
    EXPECT_TRUE(m_requester.waitFor("finished " + id.toStdString()));
    EXPECT_EQ(m_requester.ends(id.toStdString()), 1);
    EXPECT_GE(framesHeard(), framesOf(lengthMs));
}

QString FaultTest::soundFile(const QString &name, int milliseconds)
{
    QString path = inFolder(name);
    writeSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate,
               std::vector<short>(std::size_t(framesOf(milliseconds)), 1000));
    return path;
}

QJsonObject FaultTest::fileItem(const QString &id, const QString &file, int priority)
{
    return {{"id", id}, {"content", file}, {"priority", priority}};
}

QJsonObject FaultTest::endlessItem(const QString &id, int priority)
{
    return {{"id", id}, {"type", 3}, {"loop", true}, {"priority", priority}};
}

bool FaultTest::waitForFrames(long frames)
{
    return waitFor([&] { return framesHeard() >= frames; }, timeout);
}
