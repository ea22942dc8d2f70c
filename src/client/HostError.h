// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusError.h"
#include "bus/BusMessage.h"
#include <core/model/cmerror.h>

/// The error text for a bus without a host.
QString noHostText();

/// The side that did not reply within a request's timeout.
enum class Silent { Nobody, Host, Bus };

/// The error of a request without a reply.
CMError silenceError(Silent who, int timeoutMs);

/// The error of a request that got an error reply. The bus sends the same reply for a host that takes
/// too long and for one that ends before it replies; `who` tells them apart.
CMError hostError(const BusMessage &reply, Silent who, int timeoutMs);

/// An error on this side, such as a value that can't be sent.
CMError ownError(const BusError &error);
