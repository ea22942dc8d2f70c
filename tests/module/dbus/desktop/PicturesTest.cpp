// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Pictures that clients send as pixels.

#include "DesktopTest.h"

namespace {
/// Functions for scripts: a picture of one colour as the hint has it.
constexpr const char *pythonPictures = R"(
def picture(width, height, colour=b'\x01\x02\x03'):
    return dbus.Struct((width, height, width * 3, False, 8, 3,
                        dbus.ByteArray(colour * (width * height))), signature='iiibiiay')
)";

class PicturesTest : public DesktopTest
{
protected:
    QString notify(const char *script)
    {
        return python(QString::fromLatin1(pythonPictures) + QString::fromLatin1(script));
    }

    static bool hasPixels(quint32 id)
    {
        return waitFor([id] { return !rowOf(id).image().pixels().isEmpty(); });
    }
};

TEST_F(PicturesTest, AreInTheRowOfTheText)
{
    EXPECT_EQ(notify("print(Notify(body='text', hints={'image-data': picture(3, 2)}))"), "1"_s);
    ASSERT_TRUE(hasPixels(1));
    const TavoRoles row = rowOf(1);
    EXPECT_EQ(row.title().toString(), "text"_s);
    EXPECT_EQ(row.image().width(), 3);
    EXPECT_EQ(row.image().height(), 2);
    EXPECT_EQ(row.image().pixels(), QByteArray("\x01\x02\x03\xff", 4).repeated(6));
}

TEST_F(PicturesTest, AreScaledDown)
{
    EXPECT_EQ(notify("print(Notify(hints={'image-data': picture(1600, 800)}))"), "1"_s);
    ASSERT_TRUE(hasPixels(1));
    EXPECT_EQ(rowOf(1).image().width(), 256);
    EXPECT_EQ(rowOf(1).image().height(), 128);
}

TEST_F(PicturesTest, LeaveTheActionsAsTheyAre)
{
    EXPECT_EQ(
        notify("print(Notify(actions=['key', 'Label'], hints={'image-data': picture(1, 1)}))"),
        "1"_s);
    ASSERT_TRUE(hasPixels(1));
    EXPECT_EQ(rowCount(1), 2);
    EXPECT_EQ(rowOf(1, 1).title().toString(), "Label"_s);
    EXPECT_FALSE(rowOf(1, 1).path().isEmpty());
}

TEST_F(PicturesTest, MayHaveTheirEarlierNames)
{
    EXPECT_EQ(notify(R"(
print(Notify(hints={'image_data': picture(1, 1)}))
print(Notify(hints={'icon_data': picture(1, 1)}))
print(Notify(hints={'icon_data': picture(1, 1)}, icon='mail-unread'))
)"),
              "1\n2\n3"_s);
    EXPECT_TRUE(hasPixels(1));
    EXPECT_TRUE(hasPixels(2));
    settle();
    EXPECT_TRUE(rowOf(3).image().isEmpty());
}

TEST_F(PicturesTest, GoBeforeTheOneThatIsNamed)
{
    EXPECT_EQ(notify("print(Notify(hints={'image-path': '/a.png', 'image-data': picture(1, 1)}))"),
              "1"_s);
    EXPECT_TRUE(hasPixels(1));
}

TEST_F(PicturesTest, AreThoseOfTheLastChange)
{
    EXPECT_EQ(notify(R"(
for i in range(20):
    Notify(replaces=1, hints={'image-data': picture(500, 500, bytes([i, i, i]))})
print(Notify(replaces=1, hints={'image-data': picture(1, 1, b'\x63\x63\x63')}))
)"),
              "1"_s);
    EXPECT_TRUE(
        waitFor([] { return rowOf(1).image().pixels() == QByteArray("\x63\x63\x63\xff", 4); }));
    EXPECT_EQ(notify("print(Notify(replaces=1))"), "1"_s);
    EXPECT_TRUE(rowOf(1).image().isEmpty());
}

TEST_F(PicturesTest, MayCloseBeforeTheyAreScaled)
{
    EXPECT_EQ(notify(R"(
for i in range(5):
    CloseNotification(Notify(hints={'image-data': picture(2000, 2000)}))
print(Notify(hints={'image-data': picture(1, 1)}))
)"),
              "6"_s);
    EXPECT_TRUE(hasPixels(6));
    EXPECT_EQ(CMCatalog::tree(CMPath("/dbus/notifications"_s)).size(), 1U);
}

TEST_F(PicturesTest, MayBeWaitingWhenTheModuleEnds)
{
    EXPECT_EQ(notify("print(Notify(hints={'image-data': picture(2000, 2000)}))"), "1"_s);
    unload();
    EXPECT_TRUE(waitFor([] { return displayed().isEmpty(); }));
}

class PictureLimitsTest : public DesktopTest
{
protected:
    PictureLimitsTest()
        : DesktopTest({{"limits"_s, QVariantHash{{"storedBytes"_s, 1 << 20}}}})
    {
    }
};

/// A quarter of a mebibyte for each.
TEST_F(PictureLimitsTest, CountTheirPixelsAsStored)
{
    const QString results = python(QString::fromLatin1(pythonPictures) + R"(
results = [error(Notify, hints={'image-data': picture(300, 300)}) for i in range(5)]
print(len([result for result in results if type(result) == int]))
)"_s);
    EXPECT_EQ(results, "3"_s);
}
} // namespace
