// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusInterface.h"

#include "bus/InterfaceXml.h"

#include <QXmlStreamReader>

#include <stdexcept>

namespace {
std::string attribute(const QXmlStreamReader &xml, const char *name)
{
    return xml.attributes().value(QLatin1String(name)).toString().toStdString();
}

/// The joined types of the arguments.
struct Signatures
{
    std::string in;
    std::string out;
};

/// Reads the arguments of the method or signal whose start element was read last.
Signatures readArguments(QXmlStreamReader &xml)
{
    Signatures result;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("arg")) {
            const bool isOut = attribute(xml, "direction") == "out";
            (isOut ? result.out : result.in) += attribute(xml, "type");
        }
        xml.skipCurrentElement();
    }
    return result;
}

void readMember(QXmlStreamReader &xml, BusInterface &interface)
{
    const std::string name = attribute(xml, "name");
    if (xml.name() == QLatin1String("method")) {
        const Signatures arguments = readArguments(xml);
        interface.methods.push_back({name, arguments.in, arguments.out});
    } else if (xml.name() == QLatin1String("signal")) {
        interface.signalList.push_back({name, readArguments(xml).in});
    } else {
        interface.properties.push_back({name, attribute(xml, "type")});
        xml.skipCurrentElement();
    }
}

/// Reads the first interface of a node.
BusInterface readNode(QXmlStreamReader &xml)
{
    BusInterface result;
    xml.readNextStartElement();
    result.path = attribute(xml, "name");
    xml.readNextStartElement();
    result.name = attribute(xml, "name");
    while (xml.readNextStartElement()) {
        readMember(xml, result);
    }
    return result;
}

template <typename Member>
const Member *find(const std::vector<Member> &members, std::string_view name)
{
    for (const Member &member : members) {
        if (member.name == name) {
            return &member;
        }
    }
    return nullptr;
}
} // namespace

BusInterface BusInterface::fromXml(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    BusInterface result = readNode(reader);
    if (reader.hasError()) {
        throw std::runtime_error("an interface's XML is malformed: " +
                                 reader.errorString().toStdString());
    }
    const QByteArray end = "</interface>";
    const int start = xml.indexOf("<interface");
    result.xml = xml.mid(start, xml.indexOf(end) + end.size() - start).toStdString();
    return result;
}

const BusInterface::Method *BusInterface::method(std::string_view member) const
{
    return find(methods, member);
}

bool BusInterface::describes(const BusMessage &message) const
{
    const std::string member = message.member();
    if (const Method *called = method(member)) {
        return message.hasSignature(called->in.c_str());
    }
    const Signal *signal = find(signalList, member);
    return signal == nullptr || message.hasSignature(signal->signature.c_str());
}

const BusInterface &BusInterface::model()
{
    static const BusInterface interface = fromXml(InterfaceXml::model);
    return interface;
}

const BusInterface &BusInterface::notifications()
{
    static const BusInterface interface = fromXml(InterfaceXml::notifications);
    return interface;
}
