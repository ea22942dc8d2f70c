// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <linux/input.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <sys/stat.h>
#include <testing/EventLoop.h>
#include <testing/LoadedModule.h>
#include <testing/Request.h>
#include <testing/ScriptedService.h>

using namespace TavoTesting;

namespace {
const QString soundFile = QStringLiteral("/usr/share/doorbell/chime.flac");

/// The module between scripted services, which accept every sound and message.
class DoorbellTest : public testing::Test
{
protected:
    DoorbellTest()
        : m_services(QStringLiteral("Services"))
    {
        const CMPath message(QStringLiteral("/message"));
        m_services.take(TavoNotificationPlayerEnqueuePath(), ScriptedService::accept());
        m_services.take(TavoNotificationDisplayOpenPath(),
                        ScriptedService::replyWith(TavoValue().setPath(message).__variant()));
        m_services.take(TavoNotificationDisplayCancelNotifyPath(), ScriptedService::accept());
    }

    void load(const QVariantHash &config = {{"sound", soundFile}})
    {
        m_module.emplace(TAVO_TESTED_MODULE, "doorbell", config);
    }

    bool ring() { return Request(CMPath(QStringLiteral("/doorbell/ring")), QVariant()).succeeds(); }

    int soundCount() const { return m_services.count(TavoNotificationPlayerEnqueuePath()); }
    int messageCount() const { return m_services.count(TavoNotificationDisplayOpenPath()); }

    /// What was sent to a service last.
    TavoValue lastSent(const CMPath &path) const
    {
        return TavoValue(m_services.requests(path).back().value().toHash());
    }

    ScriptedService m_services;
    std::optional<LoadedModule> m_module;
};
} // namespace

TEST_F(DoorbellTest, ShowsAMessageWhenItRings)
{
    load({{"text", "Hello"}, {"timeout", 3000}});
    ASSERT_TRUE(ring());
    const auto message = lastSent(TavoNotificationDisplayOpenPath()).notificationDisplayItem();
    EXPECT_EQ(message.message().toString(), QStringLiteral("Hello"));
    EXPECT_EQ(message.timeout(), 3000);
    EXPECT_EQ(message.priority(), TavoNotificationItemPriority::High);
    EXPECT_EQ(soundCount(), 0) << "no sound is configured";
}

TEST_F(DoorbellTest, CancelsTheMessageOfThePreviousRing)
{
    load();
    ASSERT_TRUE(ring());
    settle();
    EXPECT_EQ(m_services.count(TavoNotificationDisplayCancelNotifyPath()), 0);
    ASSERT_TRUE(ring());
    ASSERT_TRUE(waitFor(
        [this] { return m_services.count(TavoNotificationDisplayCancelNotifyPath()) == 1; }));
    EXPECT_EQ(lastSent(TavoNotificationDisplayCancelNotifyPath()).path(),
              CMPath(QStringLiteral("/message")));
}

TEST_F(DoorbellTest, PlaysTheSoundWhenItRings)
{
    load();
    ASSERT_TRUE(ring());
    const auto sound = lastSent(TavoNotificationPlayerEnqueuePath()).notificationPlayerItem();
    EXPECT_EQ(sound.content(), soundFile);
    EXPECT_EQ(sound.priority(), TavoNotificationItemPriority::High);
}

TEST_F(DoorbellTest, PlaysNoSecondSoundBeforeTheFirstHasEnded)
{
    load();
    ASSERT_TRUE(ring());
    ASSERT_TRUE(ring());
    EXPECT_EQ(messageCount(), 2);
    EXPECT_EQ(soundCount(), 1);

    const auto sound = lastSent(TavoNotificationPlayerEnqueuePath()).notificationPlayerItem();
    const auto finished = TavoNotificationPlayerResponse()
                              .setId(sound.id())
                              .setType(TavoNotificationPlayerResponseType::Finished);
    const Request report(sound.playbackResponsePath(),
                         TavoValue().setNotificationPlayerResponse(finished));
    ASSERT_TRUE(report.succeeds());
    ASSERT_TRUE(ring());
    EXPECT_EQ(soundCount(), 2);
}

TEST_F(DoorbellTest, SoundsAgainAfterASoundThatWasRefused)
{
    m_services.setScript(TavoNotificationPlayerEnqueuePath(),
                         ScriptedService::refuse(QStringLiteral("The queue is full")));
    load();
    ASSERT_TRUE(ring());
    settle();
    ASSERT_TRUE(ring());
    EXPECT_EQ(soundCount(), 2);
}

TEST_F(DoorbellTest, CountsTheRings)
{
    load();
    ASSERT_TRUE(ring());
    ASSERT_TRUE(ring());
    EXPECT_EQ(valueAt(CMPath(QStringLiteral("/doorbell/rings"))).int_(), 2);
}

TEST_F(DoorbellTest, PassesOnThatTheDisplayRefused)
{
    m_services.setScript(TavoNotificationDisplayOpenPath(),
                         ScriptedService::refuse(QStringLiteral("The display is off")));
    load();
    const Request request(CMPath(QStringLiteral("/doorbell/ring")), QVariant());
    EXPECT_EQ(request.errorText(), "The display is off");
}

TEST_F(DoorbellTest, RingsWhenTheButtonIsPressed)
{
    const QTemporaryDir folder;
    const QString device = folder.filePath(QStringLiteral("button"));
    ASSERT_EQ(mkfifo(qPrintable(device), 0600), 0); // read like an input device
    load({{"button", device}});

    const std::unique_ptr<FILE, int (*)(FILE *)> button(std::fopen(qPrintable(device), "w"),
                                                        std::fclose);
    input_event events[2]{};
    events[0].type = EV_KEY;
    events[0].value = 1; // pressed; the second event ends the report
    ASSERT_EQ(std::fwrite(events, sizeof events, 1, button.get()), 1U);
    ASSERT_EQ(std::fflush(button.get()), 0);
    EXPECT_TRUE(waitFor([this] { return messageCount() == 1; }));
}

TEST_F(DoorbellTest, RefusesAConfigurationThatIsWrong)
{
    try {
        load({{"timeout", -1}});
        FAIL() << "the module was loaded";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "timeout: must be an integer from 0 to 600000");
    }
    EXPECT_THROW(load({{"button", "/nowhere/button"}}), std::runtime_error);
}
