// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Refusals.h"

BusError Refusals::tooManyRequests(int maxPerSecond)
{
    return BusError::limitExceeded("A client may send no more than " +
                                   std::to_string(maxPerSecond) + " requests per second");
}

BusError Refusals::tooManyLargeCalls()
{
    return BusError::limitExceeded(
        "A user's clients may not send so many large calls in so short a time");
}

BusError Refusals::clientHoldsTooMuch(std::size_t max, const char *what)
{
    return BusError::limitExceeded("A client may have no more than " + std::to_string(max) + ' ' +
                                   what);
}

BusError Refusals::userHoldsTooMuch(std::size_t max, const char *what)
{
    return BusError::limitExceeded("A user's clients may have no more than " + std::to_string(max) +
                                   ' ' + what);
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

BusError Refusals::busIsTooBusy()
{
    return BusError::limitExceeded("The bus is too busy for a reply of this size");
}

BusError Refusals::replyLeftOut(const BusError &reason)
{
    return {reason.name(),
            "The call was carried out, but its reply is left out: " + reason.message()};
}

BusError Refusals::pathTooLong(int maxLength)
{
    return BusError::invalidPath("A path may have no more than " + std::to_string(maxLength) +
                                 " characters");
}

BusError Refusals::notAPath(const std::string &text)
{
    return BusError::invalidPath("\"" + text +
                                 "\" is not a path: each name needs a slash before it, as in "
                                 "/notifications/display");
}

BusError Refusals::textTooLong(const char *what, int maxLength)
{
    return BusError::limitExceeded("A " + std::string(what) + " may have no more than " +
                                   std::to_string(maxLength) + " characters");
}

BusError Refusals::notAMessage()
{
    return BusError::accessDenied("A node of the notifications themselves can't be a message");
}

BusError Refusals::unknownChange()
{
    return BusError::invalidArguments("A change must be \"value\", \"rows\" or \"node\"");
}

BusError Refusals::invalidPreview()
{
    return BusError::invalidArguments("The count and the length must be 0 or more");
}

BusError Refusals::invalidRowRange()
{
    return BusError::invalidArguments(
        "The first row must be 0 or more; the count must be 0 or more, or -1 for all rows");
}

BusError Refusals::noSuchSubscription()
{
    return BusError::invalidArguments("There is no such subscription");
}

BusError Refusals::noSuchInbox(const std::string &path)
{
    return BusError::invalidArguments("The caller has no inbox at " + path);
}

BusError Refusals::tooLongForAnInbox(int maxBytes)
{
    return BusError::limitExceeded("A request to an inbox may have no more than " +
                                   std::to_string(maxBytes) + " bytes");
}

BusError Refusals::tooMuchForInboxes(int maxBytesPerSecond)
{
    return BusError::limitExceeded(
        "A user may send no more than " + std::to_string(maxBytesPerSecond) +
        " bytes per second to messages and to the inboxes of other users");
}

BusError Refusals::notAnInboxOfTheCaller()
{
    return BusError::accessDenied(
        "A client can only have messages about resources sent to its own inboxes");
}

BusError Refusals::soundNotAllowed(const std::string &reason)
{
    return BusError::accessDenied(reason);
}

BusError Refusals::idOfAnother()
{
    return BusError::accessDenied("Ids that begin with \"dbus-\" are given by the host");
}

BusError Refusals::notificationOfAnother()
{
    return BusError::accessDenied("The notification is another user's");
}

BusError Refusals::historyIsBeingRead()
{
    return BusError::limitExceeded("A client may read one page of the history at a time");
}

BusError Refusals::noSuchInhibition(unsigned cookie)
{
    return BusError::invalidArguments("The caller has no inhibition " + std::to_string(cookie));
}

BusError Refusals::soundWithoutNotification()
{
    return BusError::accessDenied("A sound must be sent together with its notification");
}

BusError Refusals::onlyPlayerReports()
{
    return BusError::accessDenied("Only the player may report how a sound ends");
}

BusError Refusals::soundWaits()
{
    return {"org.tavo.Error.Dbus", "A sound with this id waits"};
}

BusError Refusals::notificationNotOpen(unsigned id)
{
    return {"org.freedesktop.Notifications.InvalidId",
            "No notification is open with the id " + std::to_string(id)};
}
