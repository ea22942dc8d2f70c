// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/codec.h"

#include "core/base/stream.h"
#include "core/records/enumerations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {
const QVariantList notNumbers{QVariant(),          true,
                              QStringLiteral("7"), QByteArray("7"),
                              QVariantList{7},     QVariantHash{{"int", 7}}};
constexpr qint64 intMost = std::numeric_limits<int>::max();
constexpr qint64 intLeast = std::numeric_limits<int>::min();

int readInt(const QVariant &value)
{
    return TavoCodec<int>::read(value);
}
} // namespace

TEST(IntegerCodecTest, ReadsEveryKindOfWholeNumber)
{
    EXPECT_EQ(readInt(7), 7);
    EXPECT_EQ(readInt(-7), -7);
    EXPECT_EQ(readInt(7U), 7);
    EXPECT_EQ(readInt(qint64(-7)), -7);
    EXPECT_EQ(readInt(quint64(7)), 7);
    EXPECT_EQ(readInt(QVariant::fromValue<short>(-7)), -7);
    EXPECT_EQ(readInt(QVariant::fromValue<ushort>(7)), 7);
    EXPECT_EQ(readInt(QVariant::fromValue<long>(-7)), -7);
    EXPECT_EQ(readInt(QVariant::fromValue<ulong>(7)), 7);
    EXPECT_EQ(readInt(QVariant::fromValue<signed char>(-7)), -7);
    EXPECT_EQ(readInt(QVariant::fromValue<uchar>(7)), 7);
    EXPECT_EQ(readInt(QVariant::fromValue<char>(7)), 7);
    EXPECT_EQ(readInt(7.0), 7);
    EXPECT_EQ(readInt(-7.0F), -7);
}

TEST(IntegerCodecTest, ReadsTheLimits)
{
    EXPECT_EQ(readInt(intMost), intMost);
    EXPECT_EQ(readInt(intLeast), intLeast);
    EXPECT_EQ(readInt(double(intMost)), intMost);
    EXPECT_EQ(readInt(double(intLeast)), intLeast);
}

TEST(IntegerCodecTest, ReadsNumbersBeyondTheLimitsAsZero)
{
    EXPECT_EQ(readInt(intMost + 1), 0);
    EXPECT_EQ(readInt(intLeast - 1), 0);
    EXPECT_EQ(readInt(std::numeric_limits<uint>::max()), 0);
    EXPECT_EQ(readInt(std::numeric_limits<quint64>::max()), 0);
    EXPECT_EQ(readInt(double(intMost) + 1), 0);
    EXPECT_EQ(readInt(1e300), 0);
    EXPECT_EQ(readInt(std::numeric_limits<double>::infinity()), 0);
}

TEST(IntegerCodecTest, ReadsFractionsAndOtherTypesAsZero)
{
    EXPECT_EQ(readInt(7.5), 0);
    EXPECT_EQ(readInt(std::nan("")), 0);
    for (const QVariant &value : notNumbers) {
        EXPECT_EQ(readInt(value), 0) << value;
    }
}

TEST(IntegerCodecTest, ReadsLongNumbersInFull)
{
    using Limits = std::numeric_limits<qint64>;
    EXPECT_EQ(TavoCodec<qint64>::read(Limits::max()), Limits::max());
    EXPECT_EQ(TavoCodec<qint64>::read(Limits::min()), Limits::min());
    EXPECT_EQ(TavoCodec<qint64>::read(quint64(Limits::max()) + 1), 0);
    EXPECT_EQ(TavoCodec<qint64>::read(1e18), 0) << "such a double is not exact";
    EXPECT_EQ(TavoCodec<qint64>::read(9007199254740992.0), 9007199254740992);
}

TEST(IntegerCodecTest, WritesLongNumbersInFull)
{
    const auto most = std::numeric_limits<qint64>::max();
    EXPECT_EQ(TavoCodec<qint64>::write(most), QVariant(most));
}

TEST(VariantCodecTest, KeepsEveryValueUnchanged)
{
    for (const QVariant &value : notNumbers) {
        EXPECT_EQ(TavoCodec<QVariant>::read(TavoCodec<QVariant>::write(value)), value);
    }
}

TEST(BoolCodecTest, ReadsBooleansAndNumbers)
{
    EXPECT_TRUE(TavoCodec<bool>::read(true));
    EXPECT_FALSE(TavoCodec<bool>::read(false));
    EXPECT_TRUE(TavoCodec<bool>::read(2));
    EXPECT_TRUE(TavoCodec<bool>::read(0.5));
    EXPECT_FALSE(TavoCodec<bool>::read(0));
}

TEST(BoolCodecTest, ReadsEverythingElseAsFalse)
{
    EXPECT_FALSE(TavoCodec<bool>::read(QVariant()));
    EXPECT_FALSE(TavoCodec<bool>::read(QStringLiteral("true")));
    EXPECT_FALSE(TavoCodec<bool>::read(QVariantList{true}));
}

TEST(DoubleCodecTest, ReadsEveryNumber)
{
    EXPECT_EQ(TavoCodec<double>::read(1.25), 1.25);
    EXPECT_EQ(TavoCodec<double>::read(-3), -3.0);
    EXPECT_EQ(TavoCodec<double>::read(1.5F), 1.5);
    for (const QVariant &value : notNumbers) {
        EXPECT_EQ(TavoCodec<double>::read(value), 0.0) << value;
    }
}

TEST(EnumeratorCodecTest, IsCarriedAsItsNumber)
{
    using Codec = TavoCodec<TavoNotificationItemPriority::Enum>;
    EXPECT_EQ(Codec::write(TavoNotificationItemPriority::High), QVariant(2));
    EXPECT_EQ(Codec::write(TavoNotificationItemPriority::High).userType(), int(QMetaType::Int));
    EXPECT_EQ(Codec::read(2), TavoNotificationItemPriority::High);
}

TEST(EnumeratorCodecTest, KeepsNumbersWithoutAName)
{
    using Codec = TavoCodec<TavoNotificationItemPriority::Enum>;
    for (const int number : {-1, 99, int(intMost), int(intLeast)}) {
        EXPECT_EQ(int(Codec::read(Codec::write(TavoNotificationItemPriority::Enum(number)))),
                  number);
    }
}

TEST(TextCodecTest, ReadsTextsOnly)
{
    EXPECT_EQ(TavoCodec<QString>::read(QStringLiteral("text")), "text");
    for (const QVariant &value : {QVariant(), QVariant(7), QVariant(true),
                                  QVariant(QByteArray("text")), QVariant(QVariantList{"text"})}) {
        EXPECT_EQ(TavoCodec<QString>::read(value), QString()) << value;
    }
}
