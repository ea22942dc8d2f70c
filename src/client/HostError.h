// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/model/cmerror.h>

#include <sdbus-c++/sdbus-c++.h>

/// Why nobody was reached, for people.
QString noHostText();

/// Who has said nothing for as long as a request may take.
enum class Silent { Nobody, Host, Bus };

/// What that means to a client.
CMError silenceError(Silent who, int patienceMs);

/// What an answer that is an error means to a client. The bus says the same of a host that takes too
/// long and of one that ends before it has answered: who is silent tells them apart.
CMError hostError(const sdbus::Error &error, sdbus::MethodReply &answer, Silent who,
                  int patienceMs);

/// An error of this side's, a value that can't be sent for instance.
CMError ownError(const sdbus::Error &error);
