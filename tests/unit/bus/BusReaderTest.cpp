// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageTest.h"

#include <functional>
#include <limits>

namespace {
using testing::StartsWith;

constexpr const char *invalid = "org.freedesktop.DBus.Error.InvalidArgs: ";

class BusReaderTest : public MessageTest
{
protected:
    /// A reader of a message that the function writes.
    static BusReader reading(const std::function<void(BusWriter &)> &write,
                             int maxBytes = std::numeric_limits<int>::max())
    {
        BusWriter writer(message());
        write(writer);
        finish(writer.message());
        return BusReader(writer.message(), maxBytes);
    }

    static BusReader readingVariants(const QVariantList &values)
    {
        return reading([&](BusWriter &writer) {
            for (const QVariant &value : values) {
                writer.writeVariant(value);
            }
        });
    }
};

TEST_F(BusReaderTest, ReadsBackWhatAWriterHasWritten)
{
    BusReader reader = reading([](BusWriter &writer) {
        writer.writeBoolean(true);
        writer.writeInt32(-5);
        writer.writeUInt32(7);
        writer.writeString("text"_s);
        writer.writeStringList({"a", "b"});
        writer.openStruct("si");
        writer.writeString("in"_s);
        writer.writeInt32(1);
        writer.close();
        writer.writeBoolean(false);
    });
    EXPECT_TRUE(reader.readBoolean());
    EXPECT_EQ(reader.readInt32(), -5);
    EXPECT_EQ(reader.readUInt32(), 7U);
    EXPECT_EQ(reader.readString(), "text"_s);
    EXPECT_EQ(reader.readStringList(), QStringList({"a", "b"}));
    reader.enterStruct("si");
    EXPECT_EQ(reader.readString(), "in"_s);
    EXPECT_EQ(reader.readInt32(), 1);
    EXPECT_TRUE(reader.isAtEnd());
    reader.leave();
    EXPECT_FALSE(reader.readBoolean());
}

TEST_F(BusReaderTest, RefusesAnotherTypeThanItReads)
{
    BusReader reader = reading([](BusWriter &writer) { writer.writeInt32(5); });
    EXPECT_THAT(errorOf([&] { reader.readString(); }), StartsWith(invalid));
    EXPECT_THAT(errorOf([&] { reader.readStringList(); }), StartsWith(invalid));
    EXPECT_EQ(reader.readInt32(), 5);
}

TEST_F(BusReaderTest, RefusesToReadBeyondTheEnd)
{
    BusReader reader = reading([](BusWriter &writer) { writer.writeStringList({"a"}); });
    reader.enterArray("s");
    EXPECT_EQ(reader.readString(), "a"_s);
    EXPECT_THAT(errorOf([&] { reader.readString(); }), StartsWith(invalid));
}

TEST_F(BusReaderTest, ReadsIntegersOfEveryTypeFromVariants)
{
    BusReader reader =
        readingVariants({QVariant::fromValue(uchar(1)), true, QVariant::fromValue(short(-3)),
                         QVariant::fromValue(ushort(4)), -5, 6U, qlonglong(-7),
                         std::numeric_limits<qulonglong>::max()});
    for (const std::int64_t expected :
         {std::int64_t(1), std::int64_t(1), std::int64_t(-3), std::int64_t(4), std::int64_t(-5),
          std::int64_t(6), std::int64_t(-7), std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(reader.readIntegerVariant(), expected);
    }
}

TEST_F(BusReaderTest, ReadsPastVariantsOfAnotherType)
{
    BusReader reader = readingVariants(
        {0.5, QVariantHash{{"a", QVariantList{1, "b"}}}, QByteArray(100, 'x'), "text"});
    EXPECT_EQ(reader.readIntegerVariant(), std::nullopt);
    EXPECT_EQ(reader.readStringVariant(), std::nullopt);
    EXPECT_EQ(reader.readStringVariant(), std::nullopt);
    EXPECT_EQ(reader.readStringVariant(), "text"_s);
}

TEST_F(BusReaderTest, CountsTheBytesOfStringsAndOfWhatItSkips)
{
    constexpr int bytes = 4 + BusWriter::bytesPerValue;
    const auto write = [](BusWriter &writer) {
        writer.writeString("text"_s);
        writer.writeInt32(1);
        writer.writeString("x"_s);
    };
    BusReader reader = reading(write, bytes);
    reader.readString();
    reader.skip();
    EXPECT_EQ(reader.bytesRead(), std::size_t(bytes));
    EXPECT_EQ(errorOf([&] { reader.readString(); }),
              "org.freedesktop.DBus.Error.LimitsExceeded: The value is too large");
}

TEST_F(BusReaderTest, CountsAllArgumentsAsItCountsThemOneByOne)
{
    BusReader reader = reading([](BusWriter &writer) {
        writer.writeBoolean(true);
        writer.writeString("text"_s);
        writer.writeStringList({"a", "bc"});
        writer.writeVariant(QVariantHash{{"d", QVariantList{1, "ef"}}});
        writer.openArray("(si)");
        writer.openStruct("si");
        writer.writeString("in"_s);
        writer.writeInt32(1);
        writer.close();
        writer.close();
        writer.writeStringList({});
        writer.writeUInt32(7);
    });
    reader.skipAll();
    EXPECT_TRUE(reader.isAtEnd());
    const std::size_t read = reader.bytesRead();
    const std::size_t skipped = reader.bytesSkipped();
    EXPECT_EQ(skipped, std::string("textabcdefin").size());
    reader.restart();
    while (!reader.isAtEnd()) {
        reader.skip();
    }
    EXPECT_EQ(reader.bytesRead(), 2 * read);
    EXPECT_EQ(reader.bytesSkipped(), 2 * skipped);
}

TEST_F(BusReaderTest, AWriterCountsItsBytesAndRefusesTooMany)
{
    constexpr int bytes = 100;
    BusWriter writer(message(), bytes);
    writer.writeInt32(1);
    EXPECT_EQ(writer.bytesWritten(), sizeof(std::int32_t));
    writer.writeString("text"_s);
    EXPECT_GE(writer.bytesWritten(), sizeof(std::int32_t) + 4);
    EXPECT_EQ(errorOf([&] { writer.writeString(QString(bytes, 'x')); }),
              "org.tavo.Error.UnsupportedValue: The value is too large for a message");
}
} // namespace
