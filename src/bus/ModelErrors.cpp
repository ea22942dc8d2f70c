// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/ModelErrors.h"

#include "bus/BusError.h"
#include "bus/BusReader.h"
#include "bus/BusWriter.h"
#include "bus/SendableText.h"

namespace {
const std::string prefix = "org.tavo.Error.";

/// A bus allows 255 characters in a name.
constexpr int maxNameLength = 128;

bool isNameCharacter(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
           (code >= '0' && code <= '9') || code == '_';
}

bool hasOwnTitle(const CMError &error)
{
    return !error.title().isEmpty() && error.title() != CMError::DefaultTitle();
}
} // namespace

std::string ModelErrors::busName(const CMError &error)
{
    const QString name = error.name().left(maxNameLength);
    if (name.isEmpty()) {
        return prefix + "Failed";
    }
    std::string result = prefix;
    if (name.front().isDigit()) {
        result += '_';
    }
    for (const QChar character : name) {
        result += isNameCharacter(character) ? char(character.unicode()) : '_';
    }
    return result;
}

BusMessage ModelErrors::createReply(const BusMessage &call, const CMError &error)
{
    const QString message = sendableText(error.message().toString());
    const std::string name = busName(error);
    BusMessage reply = call.createErrorReply({name, message.toStdString()});
    // Most clients show the whole body, so it must not repeat what is known.
    if (name != prefix + error.name().toStdString() || hasOwnTitle(error)) {
        BusWriter writer(reply);
        writer.writeString(sendableText(error.name()));
        writer.writeString(sendableText(error.title().toString()));
    }
    return reply;
}

CMError ModelErrors::read(const BusMessage &reply)
{
    const BusError error = reply.error().value();
    const QString message = QString::fromStdString(error.message());
    if (error.name().compare(0, prefix.size(), prefix) != 0) {
        return {QString::fromStdString(error.name()), message};
    }
    if (!reply.hasSignature("sss")) {
        return {QString::fromStdString(error.name().substr(prefix.size())), message};
    }
    BusReader reader(reply);
    reader.readString(); // the message
    CMError result(reader.readString(), message);
    result.insert(CMError::Title(), reader.readString());
    return result;
}
