// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"

#include <QFile>

#include <cmath>

SoundTest::SoundTest()
{
    m_host.addArguments({QStringLiteral("--module-path"), QStringLiteral(TAVO_TEST_MODULES)});
}

void SoundTest::start(const QJsonObject &playerConfig)
{
    startModules({QStringLiteral("powermanager"), playerModule(playerConfig),
                  QStringLiteral("notifications"), m_requester.module()});
}

void SoundTest::startModules(const QJsonArray &modules)
{
    m_host.setConfiguration(
        {{QStringLiteral("modules"), modules}, {QStringLiteral("sounds"), m_limits}});
    ASSERT_TRUE(m_host.startReady()) << m_host.log().toStdString();
    m_requester.watchServices();
}

QJsonObject SoundTest::playerModule(QJsonObject config)
{
    for (const char *device : {"main", "notifications"}) {
        const QString key = QLatin1String(device) + QStringLiteral("Device");
        if (!config.contains(key)) {
            config.insert(key, QLatin1String(device));
        }
    }
    return {{QStringLiteral("name"), QStringLiteral("player")}, {QStringLiteral("config"), config}};
}

QJsonObject SoundTest::withMusic()
{
    constexpr int lengthMs = 1000;
    return {{QStringLiteral("music"), toneFile(musicFrequency, lengthMs)}};
}

void SoundTest::waitForMusic()
{
    constexpr double enoughToMeasure = 0.5;
    ASSERT_TRUE(m_mainDevice.waitForSound());
    ASSERT_TRUE(m_mainDevice.listenFor(enoughToMeasure));
}

std::vector<short> SoundTest::tone(int frequency, int milliseconds)
{
    std::vector<short> samples(std::size_t(framesOf(milliseconds)));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        // Half a sample off, so that no sample is at a zero of the sine.
        const double value = amplitude * std::sin(2 * M_PI * frequency * (double(i) + 0.5) / rate);
        samples[i] = short(std::lround(value));
    }
    return samples;
}

QString SoundTest::inFolder(const QString &name) const
{
    return m_host.folder() + QLatin1Char('/') + name;
}

QString SoundTest::toneFile(int frequency, int milliseconds, int format, const QString &suffix)
{
    QString path =
        inFolder(QStringLiteral("%1-%2.%3").arg(frequency).arg(milliseconds).arg(suffix));
    // Written once, since a host may be playing the file already.
    if (!QFile::exists(path)) {
        writeSound(path, format, rate, tone(frequency, milliseconds));
    }
    return path;
}

QJsonObject SoundTest::fileItem(const QString &id, const QString &file, int priority)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("content"), file},
            {QStringLiteral("priority"), priority}};
}

Heard SoundTest::notifications()
{
    constexpr double onItsWay = 0.3;
    EXPECT_TRUE(m_notificationDevice.waitUntil(monotonicNow() + onItsWay));
    return m_notificationDevice.heard();
}

Heard SoundTest::music()
{
    constexpr double onItsWay = 0.3;
    EXPECT_TRUE(m_mainDevice.waitUntil(monotonicNow() + onItsWay));
    return m_mainDevice.heard();
}
