// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/export.h"
#include <core/model/cmerror.h>

#include <QString>

/// Names of the errors that the client adds to those of the model and its modules. Other errors of the
/// bus keep their names on the bus (org.freedesktop.DBus.Error...).
namespace TavoClientError {

/// There is no bus, or no host on it. The request has not been delivered.
TAVO_CLIENT_EXPORT QString noBus();
/// There is a bus, but no host on it. The request has not been delivered.
TAVO_CLIENT_EXPORT QString noHost();

/// The host has not replied within the timeout. It may have carried out the request.
TAVO_CLIENT_EXPORT QString timedOut();

/// The bus itself has not responded within the timeout.
TAVO_CLIENT_EXPORT QString busTimedOut();

/// The policy of the bus does not let this user send the request. It has not been delivered.
TAVO_CLIENT_EXPORT QString notPermitted();

/// The client has reached a limit of the host: of requests, open notifications, or a value's size.
TAVO_CLIENT_EXPORT QString limitExceeded();

/// Whether a request or its reply may have been too large: asking for less at once may succeed.
TAVO_CLIENT_EXPORT bool isTooLarge(const CMError &error);

} // namespace TavoClientError
