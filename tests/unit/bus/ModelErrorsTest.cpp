// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageTest.h"
#include <bus/ModelErrors.h>

namespace {
CMError errorBy(const QString &name)
{
    return {name, "message"_s};
}

std::string busName(const QString &name)
{
    return ModelErrors::busName(errorBy(name));
}

/// A service that answers every call with an error, and a caller that reads it.
class ModelErrorsTest : public testing::Test
{
protected:
    CMError roundTrip(const CMError &error) { return ModelErrors::read(replyTo(error)); }

    BusMessage replyTo(const CMError &error)
    {
        m_error = error;
        const BusCall call = m_client.call("Fail");
        EXPECT_TRUE(call.waitForAnswer());
        return call.reply();
    }

private:
    void SetUp() override
    {
        m_object->setMethod("Fail", [this](const BusMessage &call) {
            ModelErrors::createReply(call, m_error).send();
        });
        m_service.serve(*m_object);
        m_client.setTarget(m_service.name(), m_interface.path, m_interface.name);
    }

    const BusInterface m_interface =
        BusInterface::fromXml("<node name='/test'><interface name='org.tavo.Test'><method "
                              "name='Fail'/></interface></node>");
    PrivateBus m_bus;
    BusClient m_service{m_bus.address()};
    BusClient m_client{m_bus.address()};
    std::unique_ptr<BusObject> m_object = m_service.connection().createObject(m_interface);
    CMError m_error;
};

TEST(ModelErrorNameTest, IsTheErrorsNameBelowOurs)
{
    EXPECT_EQ(busName("NoSuchNode"_s), "org.tavo.Error.NoSuchNode");
}

TEST(ModelErrorNameTest, HasAnUnderscoreForEachCharacterThatABusDoesNotAllow)
{
    EXPECT_EQ(busName("Not found: ä"_s), "org.tavo.Error.Not_found___");
    EXPECT_EQ(busName("a.b"_s), "org.tavo.Error.a_b");
    EXPECT_EQ(busName("404"_s), "org.tavo.Error._404");
}

TEST(ModelErrorNameTest, IsNeverTooLongForABus)
{
    EXPECT_LE(busName(QString(1000, 'x')).size(), 255U);
}

TEST_F(ModelErrorsTest, KeepsNameMessageAndTitle)
{
    CMError error("Not found: ä"_s, "There is \u201cnothing\u201d"_s);
    error.insert(CMError::Title(), "A title"_s);
    EXPECT_EQ(roundTrip(error), error);
}

TEST_F(ModelErrorsTest, HasOnlyAMessageIfNameAndTitleAddNothing)
{
    const CMError plain = errorBy("NoSuchNode"_s);
    EXPECT_TRUE(replyTo(plain).hasSignature("s"));
    EXPECT_EQ(roundTrip(plain), plain);
}

TEST_F(ModelErrorsTest, KeepsAnEmptyMessage)
{
    EXPECT_EQ(roundTrip({"Odd name"_s, ""_s}).message(), TrString());
    EXPECT_EQ(roundTrip({"Odd name"_s, ""_s}).name(), "Odd name"_s);
}

TEST_F(ModelErrorsTest, ArrivesWithAnyCharactersInItsTexts)
{
    const CMError odd(QString(QChar(0xd83d)), "a\0b"_s);
    EXPECT_EQ(roundTrip(odd).message().toString(), "a\ufffd"
                                                   "b"_s);
    EXPECT_EQ(roundTrip(odd).name(), "\ufffd"_s);
}

} // namespace
