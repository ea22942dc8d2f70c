// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// File descriptors that come with calls whose arguments have none.

#include "module/dbus/ModelTest.h"
#include "support/bus/ClientProgram.h"

#include <QDir>

namespace {
class DbusDescriptorsTest : public ModelTest
{
protected:
    /// A program that writes its messages itself, and prints the names of the errors that it gets.
    std::unique_ptr<ClientProgram> startAttack()
    {
        return std::make_unique<ClientProgram>(bus(), "/usr/bin/python3"_s,
                                               QStringList{"-c"_s, QString::fromLatin1(attack)});
    }

    /// The open descriptors of the host, which is this process.
    static int openDescriptors()
    {
        return QDir("/proc/self/fd"_s)
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .size();
    }

private:
    /// Sends 40 calls with 16 descriptors each to a node that never replies.
    static constexpr const char *attack = R"(
import array, os, re, socket, struct, sys

def pad(data, size):
    return data + b'\0' * (-len(data) % size)

def string(text):
    return struct.pack('<I', len(text)) + text + b'\0'

def message(serial, destination, path, interface, member, signature, body, descriptors):
    fields = b''
    for code, kind, value in ((1, b'o', string(path)), (2, b's', string(interface)),
                              (3, b's', string(member)), (6, b's', string(destination)),
                              (8, b'g', bytes([len(signature)]) + signature + b'\0'),
                              (9, b'u', struct.pack('<I', descriptors))):
        fields = pad(fields, 8) + bytes([code, 1]) + kind + b'\0'
        fields = (pad(fields, 4) if kind != b'g' else fields) + value
    head = b'l\1\0\1' + struct.pack('<III', len(body), serial, len(fields)) + fields
    return pad(head, 8) + body

bus = socket.socket(socket.AF_UNIX)
bus.connect(os.environ['DBUS_SESSION_BUS_ADDRESS'].split('path=')[1].split(',')[0])
bus.sendall(b'\0AUTH EXTERNAL ' + str(os.getuid()).encode().hex().encode() + b'\r\n')
bus.recv(1000)
bus.sendall(b'NEGOTIATE_UNIX_FD\r\n')
assert bus.recv(1000).startswith(b'AGREE')
bus.sendall(b'BEGIN\r\n')
name = b'org.freedesktop.DBus'
bus.sendall(message(1, name, b'/org/freedesktop/DBus', name, b'Hello', b'', b'', 0))
bus.recv(1000) # until the bus has read the handshake, it drops descriptors
host = b'org.tavo.Model1'
body = string(b'/test/silent') + b'\1i\0'
body = pad(body, 4) + struct.pack('<i', 1)
null = os.open('/dev/null', os.O_RDONLY)
for i in range(40):
    call = message(i + 2, host, b'/org/tavo/Model1', host, b'Call', b'sv', body, 16)
    socket.send_fds(bus, [call], [null] * 16)
print('sent', flush=True)
while True:
    for error in re.findall(rb'org\.[A-Za-z.]+Error\.[A-Za-z]+', bus.recv(65536)):
        print(error.decode(), flush=True)
)";
};

TEST_F(DbusDescriptorsTest, AreRefusedToTheirSenderAndNeverReachTheHost)
{
    std::vector<CMSetDataRequest> waiting;
    publishRequest("/test/silent"_s,
                   [&](const CMSetDataRequest &request) { waiting.push_back(request); });
    const int before = openDescriptors();
    const auto attack = startAttack();
    ASSERT_TRUE(attack->writes("sent"_s)) << attack->errors().toStdString();
    const auto refusals = [&] { return attack->output().count("Error.NotSupported"_s); };
    EXPECT_TRUE(waitFor([&] { return refusals() == 40 || !waiting.empty(); }));
    EXPECT_EQ(refusals(), 40) << attack->errors().toStdString();
    EXPECT_TRUE(waiting.empty());
    // The program itself takes some.
    EXPECT_LT(openDescriptors() - before, 16);
    EXPECT_TRUE(client->getValue("/test/none"_s).waitForAnswer());
}
} // namespace
