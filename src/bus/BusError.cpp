// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusError.h"

#include "bus/BusVariant.h"
#include "bus/RawMessage.h"

#include <cstring>

namespace {
const std::string prefix = "org.tavo.Error.";

/// A bus's names end at 255 characters; nobody needs half of them.
constexpr int longestName = 128;

bool isNameCharacter(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
           (code >= '0' && code <= '9') || code == '_';
}

/// Whether there is one of its own.
bool hasTitle(const CMError &error)
{
    return !error.title().isEmpty() && error.title() != CMError::DefaultTitle();
}
} // namespace

sdbus::Error BusErrors::invalidArguments(const std::string &message)
{
    return {"org.freedesktop.DBus.Error.InvalidArgs", message};
}

sdbus::Error BusErrors::limitExceeded(const std::string &message)
{
    return {"org.freedesktop.DBus.Error.LimitsExceeded", message};
}

sdbus::Error BusErrors::accessDenied(const std::string &message)
{
    return {"org.freedesktop.DBus.Error.AccessDenied", message};
}

sdbus::Error BusErrors::invalidPath(const std::string &message)
{
    return {prefix + "InvalidPath", message};
}

sdbus::Error BusErrors::unsupportedValue(const std::string &message)
{
    return {prefix + unsupportedValueName().toStdString(), message};
}

void BusErrors::check(int result, const char *what)
{
    if (result < 0) {
        throw sdbus::createError(-result, what);
    }
}

QString BusErrors::unsupportedValueName()
{
    return QStringLiteral("UnsupportedValue");
}

std::string BusError::nameOf(const CMError &error)
{
    const QString name = error.name().left(longestName);
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

sdbus::MethodReply BusError::reply(const sdbus::MethodCall &call, const CMError &error)
{
    const std::string message = BusVariant::shownText(error.message().toString()).toStdString();
    const std::string busName = nameOf(error);
    sdbus::MethodReply reply = call.createErrorReply(sdbus::Error(busName, message));
    // Many a client shows the message of an answer with that alone.
    if (busName != prefix + error.name().toStdString() || hasTitle(error)) {
        BusVariant::appendShownText(reply, error.name());
        BusVariant::appendShownText(reply, error.title().toString());
    }
    return reply;
}

CMError BusError::read(const sdbus::Error &error, sdbus::MethodReply &answer)
{
    const QString message = QString::fromStdString(error.getMessage());
    const std::string &busName = error.getName();
    if (busName.compare(0, prefix.size(), prefix) != 0) {
        return {QString::fromStdString(busName), message};
    }
    const char *signature = sd_bus_message_get_signature(rawMessage(answer), 1);
    if (signature == nullptr || std::strcmp(signature, "sss") != 0) {
        return {QString::fromStdString(busName.substr(prefix.size())), message};
    }
    BusVariant::readText(answer); // the message
    CMError result(BusVariant::readText(answer), message);
    result.insert(CMError::Title(), BusVariant::readText(answer));
    return result;
}
