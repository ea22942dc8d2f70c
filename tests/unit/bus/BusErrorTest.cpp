// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageTest.h"

#include <bus/BusError.h>
#include <bus/RawMessage.h>

namespace {
CMError errorBy(const QString &name)
{
    return {name, "message"_s};
}

std::string busName(const QString &name)
{
    return BusError::nameOf(errorBy(name));
}

/// A service whose every call is answered with one error, and what a caller reads of it.
class BusErrorTest : public testing::Test
{
protected:
    CMError roundTrip(const CMError &error)
    {
        m_error = error;
        CMError received;
        bool answered = false;
        m_proxy->callMethod(m_proxy->createMethodCall("org.tavo.Test", "Fail"),
                            [&](sdbus::MethodReply &answer, const sdbus::Error *failure) {
                                m_signature = sd_bus_message_get_signature(rawMessage(answer), 1);
                                received = BusError::read(*failure, answer);
                                answered = true;
                            });
        EXPECT_TRUE(waitFor([&] { return answered; }));
        return received;
    }

    std::string signatureOf(const CMError &error)
    {
        roundTrip(error);
        return m_signature;
    }

private:
    void SetUp() override
    {
        m_object = sdbus::createObject(m_service.connection(), "/test");
        m_object->registerMethod("org.tavo.Test", "Fail", "", "", [this](sdbus::MethodCall call) {
            BusError::reply(call, m_error).send();
        });
        m_object->finishRegistration();
        m_proxy = sdbus::createProxy(m_client.connection(), m_service.name(), "/test");
    }

    PrivateBus m_bus;
    BusClient m_service{m_bus.address()};
    BusClient m_client{m_bus.address()};
    std::unique_ptr<sdbus::IObject> m_object;
    std::unique_ptr<sdbus::IProxy> m_proxy;
    CMError m_error;
    std::string m_signature;
};

TEST(BusErrorNameTest, IsTheErrorsNameBelowOurs)
{
    EXPECT_EQ(busName("NoSuchNode"_s), "org.tavo.Error.NoSuchNode");
}

TEST(BusErrorNameTest, HasAnUnderscoreForWhatABusDoesNotAllow)
{
    EXPECT_EQ(busName("Not found: ä"_s), "org.tavo.Error.Not_found___");
    EXPECT_EQ(busName("a.b"_s), "org.tavo.Error.a_b");
    EXPECT_EQ(busName("404"_s), "org.tavo.Error._404");
}

TEST(BusErrorNameTest, IsNeverTooLongForABus)
{
    EXPECT_LE(busName(QString(1000, 'x')).size(), 255U);
}

TEST_F(BusErrorTest, KeepsNameMessageAndTitle)
{
    CMError error("Not found: ä"_s, "There is \u201cnothing\u201d"_s);
    error.insert(CMError::Title(), "A title"_s);
    EXPECT_EQ(roundTrip(error), error);
}

TEST_F(BusErrorTest, IsAMessageAloneWhereThatTellsAll)
{
    const CMError plain = errorBy("NoSuchNode"_s);
    EXPECT_EQ(signatureOf(plain), "s");
    EXPECT_EQ(roundTrip(plain), plain);
}

TEST_F(BusErrorTest, KeepsAnEmptyMessage)
{
    EXPECT_EQ(roundTrip({"Odd name"_s, ""_s}).message(), TrString());
    EXPECT_EQ(roundTrip({"Odd name"_s, ""_s}).name(), "Odd name"_s);
}

TEST_F(BusErrorTest, ArrivesWhateverItsTextsHold)
{
    const CMError odd(QString(QChar(0xd83d)), "a\0b"_s);
    EXPECT_EQ(roundTrip(odd).message().toString(), "a\ufffd"
                                                   "b"_s);
    EXPECT_EQ(roundTrip(odd).name(), "\ufffd"_s);
}

} // namespace
