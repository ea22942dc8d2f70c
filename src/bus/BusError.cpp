// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusError.h"

#include "bus/SendableText.h"

#include <cstring>

BusError::BusError(std::string name, std::string message)
    : m_name(std::move(name))
    , m_message(std::move(message))
    , m_what('[' + m_name + "] " + m_message)
{
}

BusError BusError::invalidArguments(const std::string &message)
{
    return {SD_BUS_ERROR_INVALID_ARGS, message};
}

BusError BusError::limitExceeded(const std::string &message)
{
    return {SD_BUS_ERROR_LIMITS_EXCEEDED, message};
}

BusError BusError::accessDenied(const std::string &message)
{
    return {SD_BUS_ERROR_ACCESS_DENIED, message};
}

BusError BusError::invalidPath(const std::string &message)
{
    return {"org.tavo.Error.InvalidPath", message};
}

BusError BusError::unsupportedValue(const std::string &message)
{
    return {"org.tavo.Error.UnsupportedValue", message};
}

BusError BusError::failed(const std::string &message)
{
    return {SD_BUS_ERROR_FAILED, message};
}

BusError BusError::fromCaught()
{
    try {
        throw;
    } catch (const BusError &error) {
        return error;
    } catch (const std::exception &error) {
        // A reply with text that is not UTF-8 can't be sent.
        const QString message = sendableText(QString::fromUtf8(error.what()));
        return failed(message.toStdString());
    } catch (...) {
        return failed("The request failed");
    }
}

int BusError::replyWithCaught(sd_bus_error *error)
{
    const BusError caught = fromCaught();
    return sd_bus_error_set(error, caught.name().c_str(), caught.message().c_str());
}

void BusError::check(int result, const char *what)
{
    if (result < 0) {
        sd_bus_error error = {};
        sd_bus_error_set_errno(&error, result);
        const std::string name = error.name;
        sd_bus_error_free(&error);
        throw BusError(name, what + (" (" + std::string(std::strerror(-result)) + ')'));
    }
}
