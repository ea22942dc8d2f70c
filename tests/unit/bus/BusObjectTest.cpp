// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {
using testing::IsEmpty;
using testing::Not;

constexpr const char *xml = R"(
<node name="/test">
  <interface name="org.tavo.Test">
    <property name="Version" type="s" access="read"/>
    <method name="Add">
      <arg name="first" type="i" direction="in"/>
      <arg name="second" type="i" direction="in"/>
      <arg name="sum" type="i" direction="out"/>
    </method>
    <signal name="Added"><arg name="sum" type="i"/></signal>
  </interface>
</node>)";

class BusObjectTest : public testing::Test
{
protected:
    /// Serves the method with the handler, and calls it with two numbers.
    BusCall addBy(const BusObject::Handler &handler)
    {
        m_object = m_service.connection().createObject(m_interface);
        m_object->setMethod("Add", handler);
        m_object->setConstant("Version", "1");
        m_service.serve(*m_object);
        m_client.setTarget(m_service.name(), "/test", "org.tavo.Test");
        return m_client.call("Add", [](BusWriter &writer) {
            writer.writeInt32(2);
            writer.writeInt32(3);
        });
    }

    static void reply(const BusMessage &call)
    {
        BusReader reader(call);
        const int first = reader.readInt32();
        BusWriter writer(call.createReply());
        writer.writeInt32(first + reader.readInt32());
        writer.message().send();
    }

    PrivateBus m_bus;
    BusClient m_service{m_bus.address()};
    BusClient m_client{m_bus.address()};
    const BusInterface m_interface = BusInterface::fromXml(xml);
    std::unique_ptr<BusObject> m_object;
};

TEST_F(BusObjectTest, ServesTheMethodsOfItsXml)
{
    EXPECT_EQ(addBy(reply).reader().readInt32(), 5);
}

TEST_F(BusObjectTest, RefusesArgumentsOfAnotherTypeThanTheXmlSays)
{
    addBy(reply).waitForAnswer();
    EXPECT_EQ(m_client.call("Add").errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(BusObjectTest, IsNotPublishedWithoutAHandlerForEachMethod)
{
    m_object = m_service.connection().createObject(m_interface);
    m_object->setConstant("Version", "1");
    EXPECT_THROW(m_service.serve(*m_object), std::logic_error);
}

TEST_F(BusObjectTest, AnswersABusErrorWithThatError)
{
    const BusCall call = addBy([](const BusMessage &) { throw BusError("org.tavo.Own", "text"); });
    EXPECT_EQ(call.errorName(), "org.tavo.Own");
    EXPECT_EQ(call.errorMessage(), "text");
}

TEST_F(BusObjectTest, AnswersAnyOtherExceptionWithAFailure)
{
    const BusCall call = addBy([](const BusMessage &) { throw std::out_of_range("too far"); });
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.Failed");
    EXPECT_EQ(call.errorMessage(), "too far");
}

TEST_F(BusObjectTest, AnswersAnExceptionWhoseTextCanNotBeSent)
{
    const BusCall call = addBy([](const BusMessage &) { throw std::runtime_error("caf\xe9"); });
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.Failed");
    EXPECT_EQ(call.errorMessage(), "caf\ufffd");
}

TEST_F(BusObjectTest, AnswersWhatIsNotAnExceptionWithAFailureToo)
{
    const BusCall call = addBy([](const BusMessage &) { throw 5; });
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.Failed");
    EXPECT_THAT(call.errorMessage(), Not(IsEmpty()));
}

TEST(BusInterfaceTest, KnowsTheSignaturesOfItsXml)
{
    const BusInterface interface = BusInterface::fromXml(xml);
    EXPECT_EQ(interface.path, "/test");
    EXPECT_EQ(interface.name, "org.tavo.Test");
    ASSERT_EQ(interface.methods.size(), 1U);
    EXPECT_EQ(interface.methods[0].in, "ii");
    EXPECT_EQ(interface.methods[0].out, "i");
    ASSERT_EQ(interface.signalList.size(), 1U);
    EXPECT_EQ(interface.signalList[0].signature, "i");
    ASSERT_EQ(interface.properties.size(), 1U);
    EXPECT_EQ(interface.properties[0].signature, "s");
}

TEST(BusInterfaceTest, RefusesMalformedXml)
{
    EXPECT_THROW(BusInterface::fromXml("<node name='/test'><interface"), std::runtime_error);
}
} // namespace
