// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/SendableText.h"
#include "MessageTest.h"
#include <core/tavo.h>

#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>

namespace {
using testing::StartsWith;

class BusVariantTest : public MessageTest
{
protected:
    /// Checks that both are equal in type and value, nested values included.
    static void expectSame(const QVariant &value)
    {
        const QVariant back = roundTrip(value);
        EXPECT_EQ(back.userType(), value.userType());
        EXPECT_EQ(back, value);
    }

    static QVariant nest(int levels, const std::function<QVariant(const QVariant &)> &wrap)
    {
        QVariant value = true;
        for (int i = 0; i < levels; ++i) {
            value = wrap(value);
        }
        return value;
    }
    static QVariant lists(int levels)
    {
        return nest(levels, [](const QVariant &inner) { return QVariantList{inner}; });
    }
    static QVariant hashes(int levels)
    {
        return nest(levels, [](const QVariant &inner) { return QVariantHash{{"in", inner}}; });
    }
};

TEST_F(BusVariantTest, KeepsBooleans)
{
    expectSame(true);
    expectSame(false);
}

TEST_F(BusVariantTest, KeepsTheSmallestAndLargestNumberOfEachType)
{
    expectSame(std::numeric_limits<int>::min());
    expectSame(std::numeric_limits<int>::max());
    expectSame(std::numeric_limits<uint>::max());
    expectSame(std::numeric_limits<qlonglong>::min());
    expectSame(std::numeric_limits<qlonglong>::max());
    expectSame(std::numeric_limits<qulonglong>::max());
    expectSame(QVariant::fromValue(std::numeric_limits<short>::min()));
    expectSame(QVariant::fromValue(std::numeric_limits<ushort>::max()));
    expectSame(QVariant::fromValue(std::numeric_limits<uchar>::max()));
}

TEST_F(BusVariantTest, KeepsEveryBitOfAFraction)
{
    for (const double fraction : {0.1, -0.0, std::numeric_limits<double>::denorm_min(),
                                  std::numeric_limits<double>::infinity()}) {
        expectSame(fraction);
        EXPECT_EQ(std::signbit(roundTrip(fraction).toDouble()), std::signbit(fraction));
    }
    EXPECT_TRUE(std::isnan(roundTrip(std::nan("")).toDouble()));
}

TEST_F(BusVariantTest, KeepsStringsOfEveryLanguageAndEmptyOnes)
{
    expectSame("");
    expectSame("Grüße, 世界, \U0001F514"_s);
    expectSame(QString(1 << 20, QLatin1Char('x')));
}

TEST_F(BusVariantTest, KeepsAnyBytes)
{
    expectSame(QByteArray());
    expectSame(QByteArray("\0\xff\n", 3));
    expectSame(QByteArray(1 << 20, '\x80'));
}

TEST_F(BusVariantTest, KeepsListsAndStringListsApart)
{
    expectSame(QStringList());
    expectSame(QStringList{"a", ""});
    expectSame(QVariantList());
    expectSame(QVariantList{1, "two", QVariantList{3.0, QVariant()}, QStringList{"four"}});
}

TEST_F(BusVariantTest, KeepsRecordsWithinRecords)
{
    expectSame(QVariantHash());
    expectSame(
        TavoValue()
            .setNotificationDisplayItem(
                TavoNotificationDisplayItem().setId("id"_s).setTitle("title"_s).setTimeout(-1))
            .__variant());
}

TEST_F(BusVariantTest, KeepsAnEmptyValue)
{
    EXPECT_FALSE(roundTrip(QVariant()).isValid());
}

TEST_F(BusVariantTest, KeepsTheFieldsOfATranslatableText)
{
    const TrString text(TrCharData{"Context", "%1 of %2", nullptr, 2}, {TrArg(1), TrArg("x"_s)});
    EXPECT_EQ(TrString::fromQVariant(roundTrip(text)), text);
}

TEST_F(BusVariantTest, SendsAPathAsAString)
{
    EXPECT_EQ(roundTrip(QVariant::fromValue(CMPath("/a/b"_s))), QVariant("/a/b"_s));
}

TEST_F(BusVariantTest, SendsAMapAsARecord)
{
    EXPECT_EQ(roundTrip(QVariantMap{{"a", 1}}), QVariant(QVariantHash{{"a", 1}}));
}

TEST_F(BusVariantTest, SendsOtherNumbersAsTheNearestWiderType)
{
    EXPECT_EQ(roundTrip(QVariant::fromValue(long(-5))), QVariant(qlonglong(-5)));
    EXPECT_EQ(roundTrip(QVariant::fromValue(0.5F)), QVariant(0.5));
    EXPECT_EQ(roundTrip(QVariant::fromValue(static_cast<signed char>(-5))),
              QVariant::fromValue(short(-5)));
}

TEST_F(BusVariantTest, RefusesAStringWithACharacterThatCanNotBeSent)
{
    const QString null = "a\0b"_s;
    const QString half = QChar(0xd83d);
    const QString none = QChar(0xfffe);
    const std::string refusal =
        "org.tavo.Error.UnsupportedValue: A string holds a character that can't be sent";
    for (const QString &text : {null, half, none}) {
        EXPECT_EQ(errorOfWriting(text), refusal);
        EXPECT_EQ(errorOfWriting(QVariantHash{{text, 1}}), refusal);
        EXPECT_EQ(errorOfWriting(QStringList{text}), refusal);
    }
}

TEST_F(BusVariantTest, ReplacesSuchCharactersInTextsForPeople)
{
    EXPECT_EQ(sendableText("a\0b"_s), "a\ufffdb"_s);
    EXPECT_EQ(sendableText(QString(QChar(0xd83d))), "\ufffd"_s);
    EXPECT_EQ(sendableText(QString(QChar(0xfffe))), "\ufffd"_s);
    EXPECT_EQ(sendableText("Grüße, \U0001F514"_s), "Grüße, \U0001F514"_s);
}

TEST_F(BusVariantTest, RefusesATypeThatIsNotPlainDataAndNamesIt)
{
    EXPECT_EQ(errorOfWriting(QVariant::fromValue(static_cast<void *>(nullptr))),
              "org.tavo.Error.UnsupportedValue: A value of the type void* can't be sent");
}

TEST_F(BusVariantTest, KeepsValuesNestedAsDeeplyAsABusAllowsAndRefusesDeeperOnes)
{
    expectSame(lists(31));
    expectSame(hashes(21));
    EXPECT_THAT(errorOfWriting(lists(32)),
                StartsWith("org.tavo.Error.UnsupportedValue: The value nests too deeply"));
    EXPECT_THAT(errorOfWriting(hashes(22)),
                StartsWith("org.tavo.Error.UnsupportedValue: The value nests too deeply"));
}

TEST_F(BusVariantTest, RefusesAValueLargerThanTheReaderAllows)
{
    const auto errorOfReading = [](const QVariant &value, int maxBytes) {
        BusWriter writer(message());
        writer.writeVariant(value);
        finish(writer.message());
        return errorOf([&] { BusReader(writer.message(), maxBytes).readVariant(); });
    };
    const std::string tooLarge =
        "org.freedesktop.DBus.Error.LimitsExceeded: The value is too large";
    constexpr int each = BusWriter::bytesPerValue;
    EXPECT_EQ(errorOfReading(QString(100, 'x'), each + 100), "");
    EXPECT_EQ(errorOfReading(QString(100, 'x'), each + 99), tooLarge);
    EXPECT_EQ(errorOfReading(QByteArray(100, 'x'), each + 100), "");
    EXPECT_EQ(errorOfReading(QByteArray(100, 'x'), each + 99), tooLarge);
    EXPECT_EQ(errorOfReading(QVariantList{1, 2}, 4 * each - 1), tooLarge);
    EXPECT_EQ(errorOfReading(QVariantHash{{"key", 1}}, 3 * each + 2), tooLarge);
}

/// Any text that can be sent.
QString anyText()
{
    const auto codes = *rc::gen::container<std::vector<uint>>(
        rc::gen::oneOf(rc::gen::inRange(1U, 0x80U), rc::gen::inRange(0x80U, 0xd800U),
                       rc::gen::inRange(0xe000U, 0xfdd0U), rc::gen::inRange(0x10000U, 0x1fffeU)));
    return QString::fromUcs4(codes.data(), int(codes.size()));
}

/// Any value of the model, nested up to this many levels.
QVariant anyValue(int levels)
{
    const int kind = *rc::gen::inRange(0, levels > 0 ? 14 : 12);
    switch (kind) {
    case 0:
        return {};
    case 1:
        return *rc::gen::arbitrary<bool>();
    case 2:
        return *rc::gen::arbitrary<int>();
    case 3:
        return *rc::gen::arbitrary<uint>();
    case 4:
        return *rc::gen::arbitrary<qlonglong>();
    case 5:
        return *rc::gen::arbitrary<qulonglong>();
    case 6:
        return QVariant::fromValue(*rc::gen::arbitrary<short>());
    case 7:
        return QVariant::fromValue(*rc::gen::arbitrary<ushort>());
    case 8:
        return QVariant::fromValue(*rc::gen::arbitrary<uchar>());
    case 9:
        return *rc::gen::arbitrary<double>();
    case 10:
        return anyText();
    case 11:
        return QByteArray::fromStdString(*rc::gen::arbitrary<std::string>());
    case 12: {
        QVariantList list;
        for (int i = *rc::gen::inRange(0, 5); i > 0; --i) {
            list.append(anyValue(levels - 1));
        }
        return list;
    }
    default: {
        QVariantHash hash;
        for (int i = *rc::gen::inRange(0, 5); i > 0; --i) {
            hash.insert(anyText(), anyValue(levels - 1));
        }
        return hash;
    }
    }
}

RC_GTEST_FIXTURE_PROP(BusVariantTest, KeepsAnyValueThatTheModelMayCarry, ())
{
    const QVariant value = anyValue(4);
    const QVariant back = roundTrip(value);
    RC_ASSERT(back.userType() == value.userType());
    RC_ASSERT(back == value);
}
} // namespace
