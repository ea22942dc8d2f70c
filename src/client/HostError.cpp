// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/HostError.h"

#include "bus/ModelErrors.h"
#include "client/TavoClientError.h"

namespace {
/// Whether the bus could not deliver the request.
bool isAboutNobody(const QString &name)
{
    return name == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
           name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
           name.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."));
}

bool isAboutSilence(const QString &name)
{
    return name == QLatin1String("org.freedesktop.DBus.Error.NoReply") ||
           name == QLatin1String("org.freedesktop.DBus.Error.Timeout");
}
} // namespace

QString noHostText()
{
    return QStringLiteral("No host is on the bus");
}

CMError ownError(const BusError &error)
{
    return {QString::fromStdString(error.name()), QString::fromStdString(error.message())};
}

CMError silenceError(Silent who, int timeoutMs)
{
    constexpr double secondMs = 1000;
    const double seconds = timeoutMs / secondMs;
    switch (who) {
    case Silent::Host:
        return {TavoClientError::timedOut(),
                QStringLiteral("The host did not answer within %1 seconds").arg(seconds)};
    case Silent::Bus:
        return {TavoClientError::busTimedOut(),
                QStringLiteral("The bus did not answer within %1 seconds").arg(seconds)};
    case Silent::Nobody:
        break;
    }
    return {CMErrors::noAnswer(), QStringLiteral("The host ended without an answer")};
}

CMError hostError(const BusMessage &reply, Silent who, int timeoutMs)
{
    CMError read = ModelErrors::read(reply);
    const QString name = read.name();
    if (isAboutNobody(name)) {
        return {TavoClientError::noHost(),
                noHostText() + QStringLiteral(": ") + read.message().toString()};
    }
    // The host uses the same name to deny access.
    if (name == QLatin1String("org.freedesktop.DBus.Error.AccessDenied") && reply.isFromBus()) {
        return {TavoClientError::notPermitted(), read.message()};
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.LimitsExceeded")) {
        return {TavoClientError::limitExceeded(), read.message()};
    }
    return isAboutSilence(name) ? silenceError(who, timeoutMs) : read;
}
