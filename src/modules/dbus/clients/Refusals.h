// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bus/BusError.h>

#include <cstddef>
#include <string>

/// The errors with which calls of clients are refused, and their texts. In addition, BusReader refuses
/// malformed messages, and errors of nodes are passed on unchanged.
namespace Refusals {
// Limits, see Quotas and UnreadBytes.
BusError tooManyRequests(int maxPerSecond);
BusError tooManyLargeCalls();
BusError clientHoldsTooMuch(std::size_t max, const char *what);
BusError userHoldsTooMuch(std::size_t max, const char *what);
BusError allClientsHoldTooMuch(std::size_t max, const char *what);
BusError clientReadsTooLittle(std::size_t maxUnreadBytes);
BusError allClientsReadTooLittle(std::size_t maxUnreadBytes);
BusError busIsTooBusy();
/// The same for a call that has been carried out already.
BusError replyLeftOut(const BusError &reason);

// Paths and other arguments of org.tavo.Model1.
BusError pathTooLong(int maxLength);
BusError notAPath(const std::string &text);
BusError textTooLong(const char *what, int maxLength);
BusError notAMessage();
BusError unknownChange();
BusError invalidRowRange();
BusError invalidPreview();
BusError noSuchSubscription();
BusError noSuchInbox(const std::string &path);
BusError notAnInboxOfTheCaller();
BusError tooLongForAnInbox(int maxBytes);
BusError tooMuchForInboxes(int maxBytesPerSecond);

// Sounds. SoundAccess has the reasons why a location is not allowed.
BusError soundNotAllowed(const std::string &reason);
BusError onlyPlayerReports();
BusError soundWaits();
BusError soundWithoutNotification();

// Requests for attention.
BusError idOfAnother();
BusError notificationOfAnother();
BusError historyIsBeingRead();
BusError noSuchInhibition(unsigned cookie);

// Arguments of org.freedesktop.Notifications.
BusError notificationNotOpen(unsigned id);
} // namespace Refusals
