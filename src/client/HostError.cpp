// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/HostError.h"

#include "bus/BusConnection.h"
#include "bus/BusError.h"
#include "client/TavoClientError.h"

namespace {
/// Whether the bus says that it has nobody to hand the request to.
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

CMError ownError(const sdbus::Error &error)
{
    return {QString::fromStdString(error.getName()), QString::fromStdString(error.getMessage())};
}

CMError silenceError(Silent who, int patienceMs)
{
    constexpr double secondMs = 1000;
    const double seconds = patienceMs / secondMs;
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

CMError hostError(const sdbus::Error &error, sdbus::MethodReply &answer, Silent who, int patienceMs)
{
    CMError read = BusError::read(error, answer);
    const QString name = read.name();
    if (isAboutNobody(name)) {
        return {TavoClientError::noHost(),
                noHostText() + QStringLiteral(": ") + read.message().toString()};
    }
    // The host denies access by the same name.
    if (name == QLatin1String("org.freedesktop.DBus.Error.AccessDenied") &&
        BusConnection::isFromBus(answer)) {
        return {TavoClientError::notPermitted(), read.message()};
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.LimitsExceeded")) {
        return {TavoClientError::limitExceeded(), read.message()};
    }
    return isAboutSilence(name) ? silenceError(who, patienceMs) : read;
}
