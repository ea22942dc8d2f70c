// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

/// Bad input, after which the next client is served as usual.
class BadInputTest : public DesktopTest
{
protected:
    ~BadInputTest() override
    {
        EXPECT_NE(notifySend({"-r"_s, "777"_s, "Still there"_s}), 0U);
        EXPECT_EQ(titleOf(777), "Still there"_s);
    }
};

TEST_F(BadInputTest, TwentyThousandNestedTagsAreReadAsText)
{
    EXPECT_EQ(python("print(Notify(body='<b>' * 20000 + 'deep' + '</b>' * 20000))"_s), "1"_s);
    EXPECT_EQ(rowOf(1).title().toString(), "deep"_s);
}

TEST_F(BadInputTest, BrokenMarkupIsReadAsText)
{
    EXPECT_EQ(python("print(Notify(body='<b>a</i> & <a href=\"b> &#xD800; </'))"_s), "1"_s);
    EXPECT_EQ(rowOf(1).title().toString(), "a & <a href=\"b> \uFFFD </"_s);
}

TEST_F(BadInputTest, TextsThatNobodyReadsToTheirEndsAreCut)
{
    EXPECT_EQ(python(R"(
print(Notify(body='<p>' * 10 + 'x' * (1 << 20)))
print(Notify(body='x' + '\U0001F600' * 40000))
print(Notify(summary='x' + '\U0001F600' * 10000))
)"_s),
              "1\n2\n3"_s);
    EXPECT_EQ(rowOf(1).title().toString().size(), 65536 - 30);
    // Never cut within a character, because the text could not be sent then.
    EXPECT_EQ(rowOf(2).title().toString().size(), 65535);
    EXPECT_EQ(titleOf(3).size(), 999);
}

TEST_F(BadInputTest, LongTextsOfAllKindsAreCut)
{
    EXPECT_EQ(python(R"(
long = 'y' * 30000
print(Notify(summary=long, app=long, icon=long, actions=['key', long],
             hints={'category': long, 'desktop-entry': long}))
)"_s),
              "1"_s);
    EXPECT_EQ(titleOf(1).size(), 1000);
    const TavoRoles row = rowOf(1);
    for (const QString &text : {row.application(), row.icon(), row.category(), row.desktopEntry(),
                                rowOf(1, 1).title().toString()}) {
        EXPECT_EQ(text.size(), 1000);
    }
}

TEST_F(BadInputTest, ImagesWithWrongSizesAreSkipped)
{
    EXPECT_EQ(python(R"(
for size in [(2**31 - 1, 2**31 - 1, 2**31 - 1), (-1, -1, -1), (0, 0, 0), (10, 10, 1), (1 << 16, 1 << 16, 4)]:
    for key in ['image-data', 'image_data', 'icon_data']:
        image = dbus.Struct((*size, True, 8, 4, dbus.ByteArray(b'few')), signature='iiibiiay')
        Notify(replaces=1, hints={key: image})
print(Notify(replaces=1, hints={'image-data': 'no image', 'image-path': 7}))
)"_s),
              "1"_s);
}

TEST_F(BadInputTest, HintsOfTheWrongTypeAreIgnored)
{
    EXPECT_EQ(python(R"(
strange = dbus.Array([1], signature='i')
hints = {key: strange for key in ['urgency', 'category', 'desktop-entry', 'transient', 'resident',
                                  'sound-file', 'sound-name', 'suppress-sound']}
print(Notify(hints=hints))
hints = {key: 'text' for key in ['urgency', 'transient', 'resident', 'suppress-sound']}
print(Notify(hints=hints))
print(Notify(hints={'urgency': dbus.Byte(200)}))
print(Notify(hints={'urgency': dbus.Int64(-(2**63))}))
print(Notify(hints={'urgency': dbus.UInt64(2**64 - 1)}))
print(Notify(hints={'urgency': dbus.Double(0.0)}))
print(Notify(hints={'urgency': dbus.UInt32(2)}))
)"_s),
              "1\n2\n3\n4\n5\n6\n7"_s);
    EXPECT_THAT(displayed(), ElementsAre(pathOf(7), pathOf(1), pathOf(2), pathOf(3), pathOf(4),
                                         pathOf(5), pathOf(6)));
}

TEST_F(BadInputTest, HintsThatNestAsDeeplyAsPossibleAreSkipped)
{
    EXPECT_EQ(python(R"(
value = dbus.Int32(1, variant_level=1)
for i in range(9):
    value = dbus.Dictionary({'key': dbus.Array([dbus.Struct((value,), signature='v')], signature='(v)')},
                            signature='sv', variant_level=1)
print(Notify(hints={'unknown': value}))
)"_s),
              "1"_s);
}

TEST_F(BadInputTest, TheSmallestAndTheLargestTimeoutsAreAccepted)
{
    EXPECT_EQ(
        python("print(Notify(timeout=2**31 - 1), Notify(timeout=-(2**31)), Notify(timeout=-2))"_s),
        "1 2 3"_s);
    settle();
    EXPECT_EQ(displayed().size(), 3);
}

TEST_F(BadInputTest, ActionsThatNobodyCanChooseAreLeftOut)
{
    EXPECT_EQ(python(R"(
print(Notify(actions=['key']))
print(Notify(actions=['a', 'Label', 'b']))
print(Notify(actions=['a', '', 'b', '\x1B\x07', 'c', 'Label', 'default', '', 'd', ' \t']))
print(Notify(actions=[text for i in range(65) for text in ('key%d' % i, 'Label')]))
print(Notify(actions=['a', 'Label'] * 65))
print(Notify(actions=['k' * 256, 'Longest', 'k' * 257, 'Too long']))
)"_s),
              "1\n2\n3\n4\n5\n6"_s);
    EXPECT_EQ(rowCount(1), 1);
    ASSERT_EQ(rowCount(2), 2);
    EXPECT_EQ(rowOf(2, 1).title().toString(), "Label"_s);
    // A click on the whole message needs no label.
    ASSERT_EQ(rowCount(3), 3);
    EXPECT_EQ(rowOf(3, 1).title().toString(), "Label"_s);
    EXPECT_EQ(rowOf(3, 2).path(), pathOf(3) + "actions/default"_s);
    EXPECT_EQ(rowCount(4), 1 + 64);
    EXPECT_EQ(rowCount(5), 2);
    ASSERT_EQ(rowCount(6), 2);
    EXPECT_EQ(rowOf(6, 1).title().toString(), "Longest"_s);
    EXPECT_EQ(log().find(" is shown without some of its actions: ").size(), 6U);
}

TEST_F(BadInputTest, ActionsWithoutEndAreRefused)
{
    EXPECT_TRUE(python("print(error(Notify, actions=[''] * 1000000))"_s)
                    .startsWith("org.freedesktop.DBus.Error.LimitsExceeded: "_s));
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(BadInputTest, ActionsWithStrangeKeysAreAccepted)
{
    EXPECT_EQ(
        python("print(Notify(actions=['', 'a', '/', 'b', '..', 'c', '\\u20AC' * 85, 'd']))"_s),
        "1"_s);
    EXPECT_EQ(rowCount(1), 5);
}

TEST_F(BadInputTest, CallsOfTheWrongTypesAreRefused)
{
    const QString results = python(R"(
def raw(method, signature, *arguments):
    return error(bus.call_blocking, 'org.freedesktop.Notifications', '/org/freedesktop/Notifications',
                 'org.freedesktop.Notifications', method, signature, arguments)
print(raw('Notify', '', ))
print(raw('Notify', 's', 'text'))
print(raw('CloseNotification', 's', 'text'))
print(raw('CloseNotification', 'i', -1))
print(raw('NoSuchMethod', ''))
)"_s);
    EXPECT_EQ(results.split('\n').size(), 5) << results.toStdString();
    EXPECT_EQ(results.count("org.freedesktop.DBus.Error.InvalidArgs: "_s), 4)
        << results.toStdString();
    EXPECT_EQ(results.count("org.freedesktop.DBus.Error.UnknownMethod: "_s), 1);
}

TEST_F(BadInputTest, IdsOfNoNotificationAreRefused)
{
    const QString name = "org.freedesktop.Notifications.InvalidId: "_s;
    EXPECT_EQ(python(R"(
print(error(CloseNotification, 0))
print(error(CloseNotification, 2**32 - 1))
)"_s),
              name + "No notification is open with the id 0\n"_s + name +
                  "No notification is open with the id 4294967295"_s);
}

TEST_F(BadInputTest, TheLargestIdIsLikeAnyOther)
{
    EXPECT_EQ(
        python(
            "print(Notify(replaces=2**32 - 1)); CloseNotification(2**32 - 1); print(Notify())"_s),
        "4294967295\n1"_s);
}

TEST_F(BadInputTest, StringsThatAreNotUtf8EndOnlyTheirSender)
{
    ClientProgram sender(bus(), "/usr/bin/python3"_s, {"-c"_s, R"(
import os, socket, struct

def align(data, size):
    return data + bytes(-len(data) % size)
def text(data):
    return struct.pack('<I', len(data)) + data + b'\0'
def header_field(code, signature, value):
    return bytes([code, len(signature)]) + signature + b'\0' + value
def message(serial, path, interface, member, destination, signature=b'', body=b''):
    fields = b''
    for code, kind, value in [(1, b'o', path), (2, b's', interface), (3, b's', member), (6, b's', destination)]:
        fields = align(fields, 8) + header_field(code, kind, text(value))
    if signature:
        fields = align(fields, 8) + header_field(8, b'g', bytes([len(signature)]) + signature + b'\0')
    start = b'l\x01\0\x01' + struct.pack('<III', len(body), serial, len(fields)) + fields
    return align(start, 8) + body

connection = socket.socket(socket.AF_UNIX)
connection.connect(os.environ['DBUS_SESSION_BUS_ADDRESS'].split('=')[1])
connection.sendall(b'\0AUTH EXTERNAL ' + str(os.getuid()).encode().hex().encode() + b'\r\n')
assert connection.recv(1000).startswith(b'OK')
connection.sendall(b'BEGIN\r\n')
bus = b'org.freedesktop.DBus'
connection.sendall(message(1, b'/org/freedesktop/DBus', bus, b'Hello', bus))
assert connection.recv(10000)
body = align(text(b'\xff\xfe'), 4) + struct.pack('<I', 0)
for value in [b'', b'\xc0\x80', b'\xed\xa0\x80']:
    body = align(body, 4) + text(value)
body = align(body, 4) + struct.pack('<I', 0)
body = align(align(body, 4) + struct.pack('<I', 0), 8) + struct.pack('<i', 0)
name = b'org.freedesktop.Notifications'
connection.sendall(message(2, b'/org/freedesktop/Notifications', name, b'Notify', name, b'susssasa{sv}i', body))
connection.settimeout(20)
while connection.recv(10000): pass
print('ended')
)"_s});
    EXPECT_TRUE(sender.succeeds()) << sender.errors().toStdString();
    EXPECT_EQ(sender.output(), "ended\n"_s);
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(BadInputTest, AFloodIsServedInTurn)
{
    ClientProgram flood(bus(), "/usr/bin/python3"_s, {"-c"_s, R"(
import dbus, dbus.lowlevel
bus = dbus.SessionBus()
while True:
    call = dbus.lowlevel.MethodCallMessage('org.freedesktop.Notifications', '/org/freedesktop/Notifications',
                                           'org.freedesktop.Notifications', 'Notify')
    call.append('', dbus.UInt32(5), '', 'flood', '<b>' * 100, dbus.Array([], signature='s'),
                dbus.Dictionary({}, signature='sv'), -1, signature='susssasa{sv}i')
    call.set_no_reply(True)
    bus.send_message(call)
)"_s});
    ASSERT_TRUE(waitFor([&] { return isOpen(5); }, std::chrono::seconds(20)));
    EXPECT_NE(notifySend({"-t"_s, "0"_s, "In the middle"_s}), 0U);
    flood.kill();
}

TEST_F(BadInputTest, ClientsThatVanishLeaveTheirNotificationsBehind)
{
    // The bus decides how many calls of a client it still passes on after the client has gone.
    for (const QString &wantsAnswers : {"True"_s, "False"_s}) {
        ClientProgram client(bus(), "/usr/bin/python3"_s,
                             {"-c"_s, QString(R"(
import dbus, dbus.lowlevel, os
bus = dbus.SessionBus()
for i in range(50):
    call = dbus.lowlevel.MethodCallMessage('org.freedesktop.Notifications', '/org/freedesktop/Notifications',
                                           'org.freedesktop.Notifications', 'Notify')
    call.append('', dbus.UInt32(0), '', 'Title', '', dbus.Array([], signature='s'),
                dbus.Dictionary({}, signature='sv'), 0, signature='susssasa{sv}i')
    call.set_no_reply(not %1)
    bus.send_message(call)
bus.flush()
os._exit(0)
)"_s)
                                          .arg(wantsAnswers)});
        EXPECT_TRUE(client.succeeds()) << client.errors().toStdString();
    }
    EXPECT_TRUE(waitFor([] { return displayed().size() >= 50; }));
}
} // namespace
