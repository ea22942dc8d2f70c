// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Values that other programs send, of types that the model never sends.

#include "MessageTest.h"

namespace {
using testing::HasSubstr;
using testing::StartsWith;

class ForeignValuesTest : public MessageTest
{
protected:
    /// The value read from a message that the function writes with sd-bus.
    template <typename Write>
    static QVariant readOf(Write write)
    {
        const BusMessage message = MessageTest::message();
        EXPECT_GE(write(message.get()), 0);
        finish(message);
        return BusReader(message).readVariant();
    }

    template <typename Write>
    static std::string errorOfReading(Write write)
    {
        return errorOf([&] { readOf(write); });
    }
};

TEST_F(ForeignValuesTest, AnArrayOfNumbersIsAList)
{
    EXPECT_EQ(
        readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "ai", 3, 1, -2, 3); }),
        QVariant(QVariantList{1, -2, 3}));
}

TEST_F(ForeignValuesTest, AStructIsAList)
{
    EXPECT_EQ(readOf([](sd_bus_message *m) {
                  return sd_bus_message_append(m, "v", "(isb)", 1, "two", 1);
              }),
              QVariant(QVariantList{1, "two", true}));
}

TEST_F(ForeignValuesTest, ADictionaryWithStringKeysIsARecord)
{
    EXPECT_EQ(readOf([](sd_bus_message *m) {
                  return sd_bus_message_append(m, "v", "a{ss}", 2, "a", "1", "b", "2");
              }),
              QVariant(QVariantHash{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(readOf([](sd_bus_message *m) {
                  return sd_bus_message_append(m, "v", "a{oas}", 1, "/a", 1, "x");
              }),
              QVariant(QVariantHash{{"/a", QStringList{"x"}}}));
}

TEST_F(ForeignValuesTest, TheLastValueOfARepeatedKeyCounts)
{
    EXPECT_EQ(readOf([](sd_bus_message *m) {
                  return sd_bus_message_append(m, "v", "a{si}", 2, "a", 1, "a", 2);
              }),
              QVariant(QVariantHash{{"a", 2}}));
}

TEST_F(ForeignValuesTest, ObjectPathsAndSignaturesAreStrings)
{
    EXPECT_EQ(readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "o", "/a"); }),
              QVariant("/a"));
    EXPECT_EQ(readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "g", "as"); }),
              QVariant("as"));
    EXPECT_EQ(readOf([](sd_bus_message *m) {
                  return sd_bus_message_append(m, "v", "ao", 2, "/a", "/b");
              }),
              QVariant(QStringList{"/a", "/b"}));
}

TEST_F(ForeignValuesTest, AVariantWithinAVariantIsItsValue)
{
    EXPECT_EQ(
        readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "v", "v", "i", 5); }),
        QVariant(5));
}

TEST_F(ForeignValuesTest, EmptyContainersAreEmptyListsAndRecords)
{
    EXPECT_EQ(readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "ad", 0); }),
              QVariant(QVariantList()));
    EXPECT_EQ(readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "a{sas}", 0); }),
              QVariant(QVariantHash()));
    EXPECT_EQ(readOf([](sd_bus_message *m) { return sd_bus_message_append(m, "v", "aay", 0); }),
              QVariant(QVariantList()));
}

TEST_F(ForeignValuesTest, AFileDescriptorIsRefused)
{
    // Our connections refuse file descriptors, but only once they are connected.
    PrivateBus bus;
    sd_bus *raw = nullptr;
    ASSERT_GE(sd_bus_new(&raw), 0);
    const BusHandle connecting(raw);
    ASSERT_GE(sd_bus_set_address(raw, bus.address().toLatin1().constData()), 0);
    ASSERT_GE(sd_bus_start(raw), 0);
    const BusMessage message =
        BusCalls::create(raw, "org.freedesktop.DBus", "/org", "org.tavo.Test", "Test");
    ASSERT_GE(sd_bus_message_append(message.get(), "v", "h", 0), 0);
    finish(message);
    EXPECT_THAT(errorOf([&] { BusReader(message).readVariant(); }),
                StartsWith("org.freedesktop.DBus.Error.InvalidArgs: A value can't hold a file"));
}

TEST_F(ForeignValuesTest, ADictionaryWithNumbersAsKeysIsRefused)
{
    EXPECT_THAT(errorOfReading([](sd_bus_message *m) {
                    return sd_bus_message_append(m, "v", "a{is}", 1, 1, "x");
                }),
                HasSubstr("The keys of a value's dictionary must be strings"));
}

TEST_F(ForeignValuesTest, AMessageWithoutAVariantIsRefused)
{
    EXPECT_THAT(
        errorOfReading([](sd_bus_message *m) { return sd_bus_message_append(m, "s", "text"); }),
        StartsWith("org.freedesktop.DBus.Error.InvalidArgs: "));
    EXPECT_THAT(errorOfReading([](sd_bus_message *) { return 0; }),
                StartsWith("org.freedesktop.DBus.Error.InvalidArgs: "));
}
} // namespace
