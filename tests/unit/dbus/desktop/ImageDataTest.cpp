// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/desktop/ImageData.h"

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {
/// The members of the hint. By default, a black picture of 2 x 2 pixels.
struct Sent
{
    int width = 2;
    int height = 2;
    int stride = 6;
    bool hasAlpha = false;
    int bits = 8;
    int channels = 3;
    QByteArray bytes = QByteArray(12, 0);
};

class ImageDataTest : public testing::Test
{
protected:
    /// Has a client's picture read.
    static std::optional<ImageData> read(const Sent &sent)
    {
        BusWriter writer(message());
        sd_bus_message *hint = writer.message().get();
        EXPECT_GE(sd_bus_message_open_container(hint, 'v', "(iiibiiay)"), 0);
        EXPECT_GE(sd_bus_message_open_container(hint, 'r', "iiibiiay"), 0);
        EXPECT_GE(sd_bus_message_append(hint, "iiibii", sent.width, sent.height, sent.stride,
                                        int(sent.hasAlpha), sent.bits, sent.channels),
                  0);
        EXPECT_GE(sd_bus_message_append_array(hint, 'y', sent.bytes.constData(),
                                              std::size_t(sent.bytes.size())),
                  0);
        EXPECT_GE(sd_bus_message_close_container(hint), 0);
        EXPECT_GE(sd_bus_message_close_container(hint), 0);
        writer.writeString("next"_s);
        finish(writer.message());
        BusReader reader(writer.message());
        auto image = ImageData::read(reader);
        // Whatever is wrong with a picture, the other hints are read.
        EXPECT_EQ(reader.readString(), "next"_s);
        return image;
    }

    static TavoImage scaled(const Sent &sent)
    {
        const auto image = read(sent);
        EXPECT_TRUE(image);
        return image ? image->scaled() : TavoImage();
    }

    static BusMessage message()
    {
        return client().connection().createCall("org.freedesktop.DBus", "/org", "org.tavo.Test",
                                                "Test");
    }
    static void finish(const BusMessage &message)
    {
        EXPECT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
        EXPECT_GE(sd_bus_message_rewind(message.get(), 1), 0);
    }

    static QByteArray bytes(std::initializer_list<int> values)
    {
        QByteArray result;
        for (const int value : values) {
            result.append(char(value));
        }
        return result;
    }

private:
    static BusClient &client()
    {
        static PrivateBus bus;
        static BusClient client(bus.address());
        return client;
    }
};

TEST_F(ImageDataTest, MakesOpaquePixelsOfThreeChannels)
{
    const TavoImage image = scaled({2, 1, 6, false, 8, 3, bytes({1, 2, 3, 4, 5, 6})});
    EXPECT_EQ(image.width(), 2);
    EXPECT_EQ(image.height(), 1);
    EXPECT_EQ(image.pixels(), bytes({1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST_F(ImageDataTest, KeepsTheOpacityOfFourChannels)
{
    EXPECT_EQ(scaled({2, 1, 8, true, 8, 4, bytes({1, 2, 3, 4, 5, 6, 7, 0})}).pixels(),
              bytes({1, 2, 3, 4, 0, 0, 0, 0}));
    EXPECT_EQ(scaled({1, 1, 4, false, 8, 4, bytes({1, 2, 3, 4})}).pixels(), bytes({1, 2, 3, 255}));
}

TEST_F(ImageDataTest, LeavesOutThePaddingOfRows)
{
    const QByteArray rows = bytes({1, 1, 1, 99, 2, 2, 2});
    EXPECT_EQ(scaled({1, 2, 4, false, 8, 3, rows}).pixels(), bytes({1, 1, 1, 255, 2, 2, 2, 255}));
}

TEST_F(ImageDataTest, MakesLargePicturesSmaller)
{
    for (const auto &[width, height, scaledWidth, scaledHeight] :
         {std::array{256, 256, 256, 256}, std::array{257, 256, 256, 255},
          std::array{512, 1024, 128, 256}, std::array{100'000, 1, 256, 1},
          std::array{1, 1'000'000, 1, 256}, std::array{2000, 2000, 256, 256}}) {
        const TavoImage image =
            scaled({width, height, width * 3, false, 8, 3, QByteArray(width * height * 3, '\x7f')});
        EXPECT_EQ(image.width(), scaledWidth);
        EXPECT_EQ(image.height(), scaledHeight);
        EXPECT_EQ(image.pixels().size(), scaledWidth * scaledHeight * 4);
        EXPECT_EQ(image.pixels().left(4), bytes({127, 127, 127, 255}));
        EXPECT_EQ(image.pixels().right(4), bytes({127, 127, 127, 255}));
    }
}

TEST_F(ImageDataTest, GivesTheMeanOfWhatAPixelStandsFor)
{
    // Black and white columns, each pair of which becomes one grey column.
    QByteArray row;
    for (int x = 0; x < 256; ++x) {
        row.append(bytes({0, 0, 0, 255, 255, 255}));
    }
    EXPECT_EQ(scaled({512, 1, 512 * 3, false, 8, 3, row}).pixels(),
              bytes({127, 127, 127, 255}).repeated(256));
}

TEST_F(ImageDataTest, GivesTheColourOfTheVisiblePart)
{
    QByteArray row;
    for (int x = 0; x < 256; ++x) {
        row.append(bytes({200, 100, 50, 255, 0, 0, 0, 0}));
    }
    EXPECT_EQ(scaled({512, 1, 512 * 4, true, 8, 4, row}).pixels(),
              bytes({200, 100, 50, 127}).repeated(256));
}

TEST_F(ImageDataTest, TellsHowLargeTheScaledOneIs)
{
    const auto image = read({512, 1024, 512 * 3, false, 8, 3, QByteArray(512 * 1024 * 3, 0)});
    ASSERT_TRUE(image);
    EXPECT_EQ(image->scaledBytes(), std::size_t(image->scaled().pixels().size()));
}

TEST_F(ImageDataTest, RefusesSizesThatLie)
{
    constexpr int max = std::numeric_limits<int>::max();
    const QByteArray few(12, 0);
    for (const Sent &sent : {Sent{0, 2, 6},
                             Sent{2, 0, 6},
                             Sent{-2, 2, 6},
                             Sent{2, -2, 6},
                             Sent{max, max, max},
                             Sent{max, 2, max},
                             Sent{2, max, 6},
                             Sent{2, 2, max},
                             Sent{2, 2, -6},
                             Sent{2, 2, 5},
                             Sent{2, 3, 6},
                             Sent{3, 2, 9},
                             Sent{2, 2, 7},
                             Sent{2, 2, 6, true},
                             Sent{2, 2, 6, false, 16},
                             Sent{2, 2, 6, false, 8, 1},
                             Sent{2, 2, 6, false, 8, 0},
                             Sent{2, 2, 6, false, 8, -3},
                             Sent{2, 2, 6, false, 8, max},
                             Sent{2, 2, 8, true, 8, 4},
                             Sent{2, 2, 6, false, 8, 3, {}}}) {
        EXPECT_FALSE(read(sent)) << sent.width << ' ' << sent.height << ' ' << sent.stride << ' '
                                 << sent.hasAlpha << ' ' << sent.bits << ' ' << sent.channels;
    }
}

TEST_F(ImageDataTest, RefusesMoreThanSixteenMebibytes)
{
    constexpr int width = 1 << 20;
    const auto readOf = [](int height) {
        return read({width, height, width * 4, true, 8, 4, QByteArray(width * height * 4, 0)});
    };
    EXPECT_TRUE(readOf(4));
    EXPECT_FALSE(readOf(5));
}

TEST_F(ImageDataTest, RefusesAnotherType)
{
    BusWriter writer(message());
    writer.writeVariant("no picture"_s);
    writer.writeVariant(QVariantList{1, 2});
    writer.writeString("next"_s);
    finish(writer.message());
    BusReader reader(writer.message());
    EXPECT_FALSE(ImageData::read(reader));
    EXPECT_FALSE(ImageData::read(reader));
    EXPECT_EQ(reader.readString(), "next"_s);
}
} // namespace
