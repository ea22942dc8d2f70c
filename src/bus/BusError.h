// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <systemd/sd-bus.h>

#include <exception>
#include <string>

/// An error on a bus: its name and a message for people. Thrown to the edge of a call, where it
/// becomes the error reply.
class BusError : public std::exception
{
public:
    BusError(std::string name, std::string message);

    /// An argument of a call is invalid.
    static BusError invalidArguments(const std::string &message);
    /// The caller has reached a limit.
    static BusError limitExceeded(const std::string &message);
    /// The caller may not have what it asks for.
    static BusError accessDenied(const std::string &message);
    /// A string is not a path of the model.
    static BusError invalidPath(const std::string &message);
    /// A message can't hold a value of the model.
    static BusError unsupportedValue(const std::string &message);
    /// Any other failure.
    static BusError failed(const std::string &message);

    /// In a catch block: the caught BusError; any other exception as failed().
    static BusError fromCaught();

    /// In a catch block of a handler that sd-bus has called: makes sd-bus send the caught exception
    /// as the error reply. The handler must return the result.
    static int replyWithCaught(sd_bus_error *error);

    /// Throws when a call of sd-bus has failed; the message begins with what could not be done.
    static void check(int result, const char *what);

    const std::string &name() const { return m_name; }
    const std::string &message() const { return m_message; }

    /// Name and message, for the log.
    const char *what() const noexcept override { return m_what.c_str(); }

private:
    std::string m_name;
    std::string m_message;
    std::string m_what;
};
