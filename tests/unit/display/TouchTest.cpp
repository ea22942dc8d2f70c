// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Look.h"
#include "display/view/ShownMessage.h"
#include "support/EventLoop.h"

#include <QGuiApplication>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

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

    /// The middle of the button with this label.
    QPoint button(const QString &label) const { return find(m_view.rootObject(), label); }

    static QPoint find(QQuickItem *parent, const QString &label)
    {
        for (QQuickItem *item : parent->childItems()) {
            if (item->property("label").toString() == label) {
                return item->mapToScene(item->boundingRect().center()).toPoint();
            }
            const QPoint inside = find(item, label);
            if (!inside.isNull()) {
                return inside;
            }
        }
        return {};
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
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
