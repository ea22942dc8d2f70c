// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/InterfaceXml.h"

#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>
#include <stdexcept>

namespace {
QString attribute(const QXmlStreamReader &xml, const char *name)
{
    return xml.attributes().value(QLatin1String(name)).toString();
}

/// Reads a member with its arguments and annotations. The reader is at the member's start.
std::string readMember(QXmlStreamReader &xml)
{
    const bool isSignal = xml.name() == QLatin1String("signal");
    QString line = xml.name() + ' ' + attribute(xml, "name");
    if (xml.name() == QLatin1String("property")) {
        line += ' ' + attribute(xml, "type") + ' ' + attribute(xml, "access");
    }
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("arg")) {
            // The arguments of a signal are "out", even if the XML does not say so.
            const QString direction = isSignal ? QString() : attribute(xml, "direction") + ' ';
            line += ", " + direction + attribute(xml, "type") + ' ' + attribute(xml, "name");
        } else if (xml.name() == QLatin1String("annotation")) {
            line += ", " + attribute(xml, "name") + '=' + attribute(xml, "value");
        }
        xml.skipCurrentElement();
    }
    return line.toStdString();
}
} // namespace

std::vector<std::string> membersOf(const QByteArray &text, const QString &interface)
{
    std::vector<std::string> members;
    QXmlStreamReader xml(text);
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("interface") || attribute(xml, "name") != interface) {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            members.push_back(readMember(xml));
        }
    }
    if (xml.hasError()) {
        throw std::runtime_error(xml.errorString().toStdString());
    }
    std::sort(members.begin(), members.end());
    return members;
}

std::vector<std::string> membersOfFile(const QString &name, const QString &interface)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("can't read " + name.toStdString());
    }
    return membersOf(file.readAll(), interface);
}
