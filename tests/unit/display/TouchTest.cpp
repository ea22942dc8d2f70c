// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Look.h"
#include "display/view/ShownMessage.h"
#include "support/EventLoop.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {
/// Notes what a person does.
class Person : public MessageSource
{
public:
    void start() override {}
    void close(const CMPath & /*path*/) override { ++closed; }
    void activate(const CMPath &action) override { activated.append(action.toString()); }

    int closed = 0;
    QStringList activated;
};

/// The built-in look, touched by a finger.
class DisplayTouchTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_look.setScreen(600, 1);
        m_view.rootContext()->setContextProperty("message", &m_message);
        m_view.rootContext()->setContextProperty("look", &m_look);
        m_view.setResizeMode(QQuickView::SizeRootObjectToView);
        Head head;
        head.path = CMPath("/door");
        head.priority = 3;
        head.waitingCount = 2;
        QElapsedTimer now;
        now.start();
        head.since = now.msecsSinceReference();
        head.remaining = 60000;
        Message message;
        message.title = "Door";
        message.text = QString("Somebody rings\n").repeated(100);
        message.actions = {{CMPath("/open"), "Open", {}}, {CMPath("/wait"), "Wait", {}}};
        Q_EMIT m_person.shown(head, message);
        m_view.setSource(QUrl::fromLocalFile(TAVO_DISPLAY_CARD));
        m_view.resize(420, 600);
        m_view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
        ASSERT_NE(m_view.rootObject(), nullptr);
        ASSERT_TRUE(waitFor([this] { return m_message.isArmed(); }));
    }

    using Condition = std::function<bool(const QQuickItem &)>;

    /// The items on the screen for which the condition holds.
    QList<QQuickItem *> items(const Condition &condition) const
    {
        QList<QQuickItem *> all = m_view.rootObject()->childItems();
        for (int i = 0; i < all.size(); ++i) {
            all += all[i]->childItems();
        }
        all.erase(std::remove_if(all.begin(), all.end(),
                                 [&](const QQuickItem *item) {
                                     return !item->isVisible() || !condition(*item);
                                 }),
                  all.end());
        return all;
    }

    /// The middle of the button with this label.
    QPoint button(const QString &label) const
    {
        const auto found = items(
            [&](const QQuickItem &item) { return item.property("label").toString() == label; });
        return found.isEmpty() ? QPoint()
                               : found[0]->mapToScene(found[0]->boundingRect().center()).toPoint();
    }

    QRectF placeOfText(const QString &text) const
    {
        const auto found =
            items([&](const QQuickItem &item) { return item.property("text").toString() == text; });
        return found.isEmpty() ? QRectF() : found[0]->mapRectToScene(found[0]->boundingRect());
    }

    void touch(const QPoint &from, const QPoint &to)
    {
        QTest::touchEvent(&m_view, m_screen).press(0, from);
        constexpr int steps = 5;
        for (int i = 1; i <= steps && to != from; ++i) {
            QTest::touchEvent(&m_view, m_screen).move(0, from + (to - from) * i / steps);
        }
        QTest::touchEvent(&m_view, m_screen).release(0, to);
        settle();
    }

    Person m_person;
    ShownMessage m_message{&m_person};
    Look m_look{m_message};
    QQuickView m_view;
    QTouchDevice *const m_screen = QTest::createTouchDevice();
};

TEST_F(DisplayTouchTest, closesTheMessageWithATap)
{
    const QPoint close = button("Close");
    touch(close, close);
    EXPECT_EQ(m_person.closed, 1);
}

TEST_F(DisplayTouchTest, choosesAnActionWithATap)
{
    const QPoint wait = button("Wait");
    touch(wait, wait);
    EXPECT_EQ(m_person.activated, QStringList{"/wait"});
}

TEST_F(DisplayTouchTest, doesNothingWithAFingerThatLeavesTheButton)
{
    touch(button("Close"), {100, 300});
    touch(button("Open"), {100, 100});
    EXPECT_EQ(m_person.closed, 0);
    EXPECT_EQ(m_person.activated, QStringList());
}

TEST_F(DisplayTouchTest, scrollsTheTextAndClosesNothing)
{
    const auto texts = m_view.rootObject()->findChildren<QQuickItem *>();
    const auto text = std::find_if(texts.begin(), texts.end(), [](const QQuickItem *item) {
        return item->property("contentHeight").toReal() > item->height();
    });
    ASSERT_NE(text, texts.end());
    touch({200, 400}, {200, 150});
    EXPECT_TRUE(waitFor([&] { return (*text)->property("contentY").toReal() > 0; }));
    EXPECT_EQ(m_person.closed, 0);
}
TEST_F(DisplayTouchTest, marksWhichPartOfALongTextIsSeen)
{
    const auto marks =
        items([](const QQuickItem &item) { return item.property("area").isValid(); });
    ASSERT_EQ(marks.size(), 1); // The buttons fit.
    const qreal top = marks[0]->y();
    EXPECT_LT(marks[0]->height(), 300);
    touch({200, 400}, {200, 150});
    EXPECT_TRUE(waitFor([&] { return marks[0]->y() > top; }));
}

TEST_F(DisplayTouchTest, mirrorsTheHeadAndKeepsButtonsOnWholePixels)
{
    ASSERT_LT(placeOfText(m_look.waitingText()).right(), placeOfText(m_look.secondsText()).left());
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    m_look.setScreen(590, 1); // So that it looks again.
    const auto isMirrored = [this] {
        const QRectF dot = placeOfText(QStringLiteral("\u00b7"));
        return placeOfText(m_look.secondsText()).right() < dot.left() &&
               dot.right() < placeOfText(m_look.waitingText()).left();
    };
    EXPECT_TRUE(waitFor(isMirrored));
    const auto buttons =
        items([](const QQuickItem &item) { return !item.property("label").toString().isEmpty(); });
    ASSERT_EQ(buttons.size(), 3);
    for (const QQuickItem *button : buttons) {
        EXPECT_EQ(button->x(), std::round(button->x()));
    }
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
