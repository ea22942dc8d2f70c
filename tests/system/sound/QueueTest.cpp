// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"
#include "support/EventLoop.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

enum Priority { low = 0, normal = 1, high = 2, urgent = 3 };

// One for each sound, so a recording shows which one played.
constexpr int frequencyA = 1000;
constexpr int frequencyB = 2000;
constexpr int shortMs = 300;

} // namespace

class QueueTest : public SoundTest
{
protected:
    void enqueueTone(const QString &id, int frequency, int milliseconds, int priority = normal)
    {
        m_requester.enqueue(fileItem(id, toneFile(frequency, milliseconds), priority));
    }

    void waitForQuiet()
    {
        ASSERT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    }
};

TEST_F(QueueTest, AnUrgentSoundInterruptsAnotherWhichGoesOnAfterwards)
{
    start();
    constexpr int longMs = 2000;
    enqueueTone("long", frequencyA, longMs);
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    enqueueTone("urgent", frequencyB, shortMs, urgent);
    waitForQuiet();
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("started long", "started urgent", "finished urgent", "finished long"));
    const Heard heard = notifications();
    const auto longSpans = heard.tones(frequencyA);
    const auto urgentSpans = heard.tones(frequencyB);
    ASSERT_THAT(longSpans, SizeIs(2));
    ASSERT_THAT(urgentSpans, SizeIs(1));
    EXPECT_GE(urgentSpans[0].begin, longSpans[0].end - 0.02);
    EXPECT_LE(urgentSpans[0].end, longSpans[1].begin + 0.02);
    EXPECT_NEAR(heard.toneMs(frequencyB), shortMs, 15);
    // A pause keeps the position, at worst with an error of the step in which the device
    // counts.
    constexpr int stepMs = 10;
    EXPECT_NEAR(heard.frames(), framesOf(longMs + shortMs), framesOf(stepMs));
}

TEST_F(QueueTest, ALoopSoundsWithoutGapsUntilItIsCancelled)
{
    start();
    QJsonObject item = fileItem("loop", toneFile(frequencyA, shortMs));
    item.insert("loop", true);
    m_requester.enqueue(item);
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    constexpr double severalTurns = 1.4;
    ASSERT_TRUE(m_notificationDevice.listenFor(severalTurns));
    m_requester.cancel("loop");
    EXPECT_EQ(m_requester.answer(), "");
    waitForQuiet();
    EXPECT_THAT(m_requester.responses(), ElementsAre("started loop", "cancelled loop"));
    const Heard heard = notifications();
    EXPECT_GT(heard.frames(), framesOf(4 * shortMs));
    EXPECT_THAT(heard.tones(frequencyA), SizeIs(1));
    EXPECT_LT(heard.span()->end, m_requester.momentOf("cancelled loop") + 0.3);
}

TEST_F(QueueTest, AWaitingSoundThatIsCancelledIsNeverHeard)
{
    start();
    enqueueTone("first", frequencyA, shortMs);
    enqueueTone("second", frequencyB, shortMs);
    m_requester.cancel("second");
    EXPECT_EQ(m_requester.answer(), "");
    waitForQuiet();
    EXPECT_THAT(
        m_requester.responses(),
        testing::UnorderedElementsAre("started first", "cancelled second", "finished first"));
    EXPECT_EQ(notifications().frames(), framesOf(shortMs));
    EXPECT_THAT(notifications().tones(frequencyB), IsEmpty());
}

TEST_F(QueueTest, ACancelledSoundStops)
{
    start();
    constexpr int endlessMs = 20000;
    enqueueTone("sound", frequencyA, endlessMs);
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    m_requester.cancel("sound");
    EXPECT_EQ(m_requester.answer(), "");
    waitForQuiet();
    EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "cancelled sound"));
    EXPECT_LT(notifications().span()->end, m_requester.momentOf("cancelled sound") + 0.3);
}

TEST_F(QueueTest, AnUnknownSoundCannotBeCancelled)
{
    start();
    m_requester.cancel("nobody");
    EXPECT_EQ(m_requester.answer(), "Invalid notification sound id to stop");
}

TEST_F(QueueTest, SoundsWaitInTheOrderOfTheirPriorities)
{
    start();
    constexpr int longEnoughToQueueMs = 1000;
    enqueueTone("now", frequencyA, longEnoughToQueueMs, urgent);
    enqueueTone("low", 1500, shortMs, low);
    enqueueTone("high", 2500, shortMs, high);
    enqueueTone("normal", 2000, shortMs, normal);
    enqueueTone("high too", 2500, shortMs, high);
    waitForQuiet();
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("started now", "finished now", "started high", "finished high",
                            "started high too", "finished high too", "started normal",
                            "finished normal", "started low", "finished low"));
    const Heard heard = notifications();
    EXPECT_EQ(heard.frames(), framesOf(longEnoughToQueueMs + 4 * shortMs));
    ASSERT_THAT(heard.tones(2000), SizeIs(1));
    ASSERT_THAT(heard.tones(1500), SizeIs(1));
    EXPECT_LT(heard.tones(2500).back().end, heard.tones(2000).front().begin + 0.02);
    EXPECT_LT(heard.tones(2000).back().end, heard.tones(1500).front().begin + 0.02);
}

TEST_F(QueueTest, ThreeRequestersAtOnceAreEachServed)
{
    Requester second("second", m_host.folder());
    Requester third("third", m_host.folder());
    startModules({"powermanager", playerModule(), "notifications", m_requester.module(),
                  second.module(), third.module()});
    constexpr int each = 4;
    constexpr int lengthMs = 100;
    const QString file = toneFile(frequencyA, lengthMs);
    Requester *const requesters[] = {&m_requester, &second, &third};
    for (int i = 0; i < each; ++i) {
        int number = 0;
        for (Requester *requester : requesters) {
            requester->enqueue(fileItem(QString("%1-%2").arg(number++).arg(i), file));
        }
    }
    waitForQuiet();
    int number = 0;
    for (Requester *requester : requesters) {
        std::vector<std::string> expected;
        for (int i = 0; i < each; ++i) {
            const std::string id = std::to_string(number) + '-' + std::to_string(i);
            expected.insert(expected.end(), {"started " + id, "finished " + id});
        }
        EXPECT_TRUE(waitFor([&] { return requester->responses().size() == expected.size(); }));
        EXPECT_EQ(requester->responses(), expected);
        ++number;
    }
    EXPECT_EQ(notifications().frames(), framesOf(3 * each * lengthMs));
    EXPECT_LE(notifications().peak(), amplitude);
}
