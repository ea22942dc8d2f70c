// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/export.h"

#include <QString>

/// The names of the errors that a request of a client may end with besides those of the model and of
/// its modules. Errors of the bus itself keep the bus's names (org.freedesktop.DBus.Error...).
namespace TavoClientError {

/// There is no bus, or no host on it: the request has reached nobody.
TAVO_CLIENT_EXPORT QString noBus();
TAVO_CLIENT_EXPORT QString noHost();

/// No answer came in time; whether the request was carried out is not known.
TAVO_CLIENT_EXPORT QString timedOut();

/// The same, and it is the bus that says nothing: it hangs.
TAVO_CLIENT_EXPORT QString busTimedOut();

/// The bus's policy lets this user send no such request; it has not reached the host.
TAVO_CLIENT_EXPORT QString notPermitted();

/// The host holds the client to a limit: of requests, of open notifications, of a value's size.
TAVO_CLIENT_EXPORT QString limitExceeded();

} // namespace TavoClientError
