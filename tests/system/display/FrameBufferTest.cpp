// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

namespace {
/// A device with neither X11 nor Wayland, whose frame buffer is a plain file.
class DisplayFrameBufferTest : public DisplayTest
{
protected:
    static constexpr int s_width = 800;
    static constexpr int s_height = 480;

    void SetUp() override
    {
        QFile file(m_file);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.resize(s_width * s_height * 4));
        m_display.setEnvironment("DISPLAY", "");
        m_display.setEnvironment("QT_QPA_PLATFORM", "linuxfb:fb=" + m_file);
        m_display.setEnvironment("TAVO_TEST_FRAMEBUFFER", m_file);
        m_display.setEnvironment("LD_PRELOAD", TAVO_FRAMEBUFFER_LIBRARY);
    }

    QImage picture() const
    {
        QFile file(m_file);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray pixels = file.readAll();
        const QImage shared(reinterpret_cast<const uchar *>(pixels.constData()), s_width, s_height,
                            QImage::Format_RGB32);
        return shared.copy();
    }

    bool waitForPixel(const QPoint &point, const QColor &color) const
    {
        return waitFor([&] { return picture().pixelColor(point) == color; },
                       std::chrono::seconds(20));
    }

    const QString m_file = m_folder.filePath("framebuffer");
};

TEST_F(DisplayFrameBufferTest, showsAMessageAndTheNextOne)
{
    start();
    show("Door");
    const Palette normal = Palette::find("dark", Priority::Normal);
    EXPECT_TRUE(waitForPixel({5, 5}, normal.backdrop));
    EXPECT_TRUE(waitForPixel({s_width / 2, s_height / 2 + 2}, normal.background));
    show("Alarm", Priority::Urgent);
    EXPECT_TRUE(waitForPixel({5, 5}, Palette::find("dark", Priority::Urgent).backdrop));
}

TEST_F(DisplayFrameBufferTest, leavesABlackScreen)
{
    start();
    const uint id = show("Door");
    ASSERT_TRUE(waitForPixel({5, 5}, Palette::find("dark", Priority::Normal).backdrop));
    m_messages.close(id);
    EXPECT_TRUE(waitForPixel({5, 5}, Qt::black));
    EXPECT_TRUE(waitForPixel({s_width / 2, s_height / 2}, Qt::black));
}
} // namespace
