// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/ErrorText.h"

#include <client/TavoClientError.h>

namespace {
QString noBusText(const CMError &error, const QString &bus)
{
    const QString what =
        QStringLiteral("the bus (%1) can't be reached: %2. ").arg(bus, error.message().toString());
    if (bus == QLatin1String("session")) {
        return what + QStringLiteral("Use --bus or TAVO_BUS to name another, or start one: "
                                     "dbus-run-session -- bash");
    }
    return what + QStringLiteral("Use --bus or TAVO_BUS to name another");
}

QString noHostText(const QString &bus)
{
    const QString what = QStringLiteral("no host is on the bus (%1). Start one").arg(bus);
    if (bus == QLatin1String("session")) {
        return what + QStringLiteral(": tavo-host");
    }
    const QString there =
        QStringLiteral(" that has \"bus\": \"%1\" in its configuration of the module dbus")
            .arg(bus);
    return bus == QLatin1String("system")
               ? what + there + QStringLiteral(": systemctl start tavo-host")
               : what + there;
}

QString refusalText(const CMError &error)
{
    const QString message = error.message().toString();
    return QStringLiteral("the host refused: %1 (%2)")
        .arg(message.isEmpty() ? QStringLiteral("it gave no reason") : message, error.name());
}
} // namespace

ExitCode exitCodeOf(const CMError &error)
{
    const QString name = error.name();
    if (name == TavoClientError::noBus() || name == TavoClientError::noHost()) {
        return ExitCode::Unavailable;
    }
    if (name == TavoClientError::timedOut() || name == TavoClientError::busTimedOut()) {
        return ExitCode::TimedOut;
    }
    return ExitCode::Refused;
}

QString errorText(const CMError &error, const CMPath &path, const QString &bus)
{
    const QString name = error.name();
    if (name == TavoClientError::noBus()) {
        return noBusText(error, bus);
    }
    if (name == TavoClientError::noHost()) {
        return noHostText(bus);
    }
    if (name == TavoClientError::busTimedOut()) {
        return QStringLiteral("the bus (%1) takes connections but does not answer. Restart it, or "
                              "use --bus or TAVO_BUS to name another")
            .arg(bus);
    }
    if (name == TavoClientError::timedOut()) {
        return QStringLiteral("%1. To wait longer, use --reply-timeout")
            .arg(error.message().toString());
    }
    if (name == CMErrors::noSuchNode() && !path.isEmpty()) {
        return QStringLiteral("there is no node at %1. tavo tree lists the nodes; the host's "
                              "configuration lists the modules that it loads")
            .arg(path.toString());
    }
    if (name == CMErrors::notSupported() && !path.isEmpty()) {
        return QStringLiteral("%1 takes no such request. tavo tree shows its kind: get reads a "
                              "value, rows reads a list, call sends a request")
            .arg(path.toString());
    }
    if (name == TavoClientError::notPermitted()) {
        return QStringLiteral(
                   "the bus (%1) does not let this user send requests to the host. The "
                   "host's own policy allows it for members of the group tavo-host: usermod -a "
                   "-G tavo-host USER, and log in again")
            .arg(bus);
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.AccessDenied")) {
        return QStringLiteral("the host refused: %1. \"sounds\" in its configuration of the module "
                              "dbus says which sounds clients may play")
            .arg(error.message().toString());
    }
    if (name == TavoClientError::limitExceeded()) {
        return refusalText(error) + QStringLiteral(". The limits are set in the host's "
                                                   "configuration of the module dbus");
    }
    return refusalText(error);
}
