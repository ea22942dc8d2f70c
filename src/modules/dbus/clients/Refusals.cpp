// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Refusals.h"

BusError Refusals::tooManyRequests(int maxPerSecond)
{
    return BusError::limitExceeded("No more than " + std::to_string(maxPerSecond) +
                                   " requests a second are taken from a client");
}

BusError Refusals::clientHoldsTooMuch(std::size_t max, const char *what)
{
    return BusError::limitExceeded("A client may have no more than " + std::to_string(max) + ' ' +
                                   what);
}

BusError Refusals::allClientsHoldTooMuch(std::size_t max, const char *what)
{
    return BusError::limitExceeded("All clients together may have no more than " +
                                   std::to_string(max) + ' ' + what);
}

BusError Refusals::clientReadsTooLittle(std::size_t maxUnreadBytes)
{
    return BusError::limitExceeded("A client may leave no more than " +
                                   std::to_string(maxUnreadBytes) +
                                   " bytes of replies and signals unread");
}

BusError Refusals::allClientsReadTooLittle(std::size_t maxUnreadBytes)
{
    return BusError::limitExceeded("All clients together may leave no more than " +
                                   std::to_string(maxUnreadBytes) +
                                   " bytes of replies and signals unread");
}

BusError Refusals::pathTooLong(int maxLength)
{
    return BusError::invalidPath("A path has no more than " + std::to_string(maxLength) +
                                 " characters");
}

BusError Refusals::notAPath(const std::string &text)
{
    return BusError::invalidPath("\"" + text +
                                 "\" is no path: it takes a slash before each name, as in "
                                 "/notifications/display");
}

BusError Refusals::unknownChange()
{
    return BusError::invalidArguments("A change is one of \"value\", \"rows\" and \"node\"");
}

BusError Refusals::invalidRowRange()
{
    return BusError::invalidArguments(
        "The first row is 0 or more; the count of rows is 0 or more, or -1 for all");
}

BusError Refusals::noSuchSubscription()
{
    return BusError::invalidArguments("There is no such subscription");
}

BusError Refusals::noSuchInbox(const std::string &path)
{
    return BusError::invalidArguments("The caller has no inbox at " + path);
}

BusError Refusals::soundNotAllowed(const std::string &reason)
{
    return BusError::accessDenied(reason);
}

BusError Refusals::onlyPlayerReports()
{
    return BusError::accessDenied("Only the player tells how a sound ends");
}

BusError Refusals::tooManyActions(int max)
{
    return BusError::limitExceeded("A notification has no more than " + std::to_string(max) +
                                   " actions");
}

BusError Refusals::actionWithoutLabel()
{
    return BusError::invalidArguments("Each action takes a key and a label");
}

BusError Refusals::notificationNotOpen(unsigned id)
{
    return {"org.freedesktop.Notifications.InvalidId",
            "No notification is open by the id " + std::to_string(id)};
}
