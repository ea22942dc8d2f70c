// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"
#include "core/records/enumerations.h"
#include "core/records/tavohash.h"

/// The name of the notifications module, for other modules.
TAVO_API_EXPORT QString TavoNotificationsName();

/// The path of the module, below which its nodes are.
TAVO_API_EXPORT CMPath TavoNotificationsPath();

/// Request: queues a sound. Value: a TavoValue with notificationPlayerItem(). Reply: empty, once
/// the sound is queued. The start and the end are reported to the item's response path.
TAVO_API_EXPORT CMPath TavoNotificationPlayerEnqueuePath();

/// Request: cancels a sound, queued or playing. Value: a TavoValue with string_(), the id. Reply:
/// empty.
TAVO_API_EXPORT CMPath TavoNotificationPlayerCancelPath();

/// Value: a TavoValue with bool_(), true from the first sound of a queue until the queue is empty.
TAVO_API_EXPORT CMPath TavoNotificationPlayerIsPlayingPath();

/// Request: shows a message. Value: a TavoValue with notificationDisplayItem(). Reply: a TavoValue
/// with path(), the path for cancelling or closing the notification.
TAVO_API_EXPORT CMPath TavoNotificationDisplayOpenPath();

/// Request: closes a display notification. Value: a TavoValue with path(), or just the path. Reply:
/// true.
TAVO_API_EXPORT CMPath TavoNotificationDisplayCancelNotifyPath();

/// Rows: the paths of the open display notifications; the first is the one on display.
TAVO_API_EXPORT CMPath TavoNotificationDisplayQueuePath();

/// Value: a TavoValue with displayCurrent(), the notification on display. It changes once for each new
/// head of the queue, after the queue's rows, and is empty when nothing is on display. When only the
/// number of those that wait changes, the value follows within 100 ms.
TAVO_API_EXPORT CMPath TavoNotificationDisplayCurrentPath();

/// Value: a TavoValue with displayEnded(), the notification that ended last; empty before the first
/// one. It changes once for each end, after the queue's rows and before the next one is on display.
/// No two values are equal, so every subscriber gets every end.
TAVO_API_EXPORT CMPath TavoNotificationDisplayEndedPath();

/// The parent of the nodes made for messages, each a list with one row, the text. Such a node stays
/// when its notification is closed, until a notification whose id is the node's name is closed. To
/// send many messages, publish a node of your own and open it by its path.
TAVO_API_EXPORT CMPath TavoNotificationDisplaySimpleMessageNodePath();

/// A request to play a sound.
class TavoNotificationPlayerItem : public TavoHash
{
    TAVO_RECORD(TavoNotificationPlayerItem)

    /// Chosen by the requester. Must not be empty or the id of another queued sound.
    TAVO_FIELD(QString, id, setId)
    /// What to play; type() says in which form.
    TAVO_FIELD(QString, content, setContent)
    /// The media type of a stream, such as audio/L16;rate=48000;channels=2.
    TAVO_FIELD(QString, contentStreamFormat, setContentStreamFormat)
    /// In which form content() is given.
    TAVO_FIELD(TavoNotificationPlayerItemType::Enum, type, setType)
    /// How urgent the sound is.
    TAVO_FIELD(TavoNotificationItemPriority::Enum, priority, setPriority)
    /// Repeats the sound until it is cancelled.
    TAVO_FIELD(bool, loop, setLoop)
    /// Decibels by which it is quieter; 0 or less: not at all.
    TAVO_FIELD(int, attenuation, setAttenuation)
    /// The node to which the start and the end are reported, each as a TavoValue with
    /// notificationPlayerResponse(); may be empty.
    TAVO_FIELD(CMPath, playbackResponsePath, setPlaybackResponsePath)
};

/// How a sound started or ended.
class TavoNotificationPlayerResponse : public TavoHash
{
    TAVO_RECORD(TavoNotificationPlayerResponse)

    /// The id of the sound.
    TAVO_FIELD(QString, id, setId)
    /// What happened to it.
    TAVO_FIELD(TavoNotificationPlayerResponseType::Enum, type, setType)
};

/// A request to show a message, or a node that the requester has published.
class TavoNotificationDisplayItem : public TavoHash
{
    TAVO_RECORD(TavoNotificationDisplayItem)

    /// Chosen by the requester, and reported in the end; may be empty.
    TAVO_FIELD(QString, id, setId)
    /// A heading; may be empty.
    TAVO_FIELD(TrString, title, setTitle)
    /// The text. If there is one, the module makes the node; if not, path must name a node.
    TAVO_FIELD(TrString, message, setMessage)
    /// Milliseconds on display; 0 or less: until closed.
    TAVO_FIELD(int, timeout, setTimeout)
    /// How urgent the message is.
    TAVO_FIELD(TavoNotificationItemPriority::Enum, priority, setPriority)
    /// The node to show, if there is no message().
    TAVO_FIELD(CMPath, path, setPath)
};

/// The notification on display.
class TavoNotificationDisplayCurrent : public TavoHash
{
    TAVO_RECORD(TavoNotificationDisplayCurrent)

    /// Names the notification.
    TAVO_FIELD(CMPath, path, setPath)
    /// The id of the request; often empty.
    TAVO_FIELD(QString, id, setId)
    /// How urgent it is.
    TAVO_FIELD(TavoNotificationItemPriority::Enum, priority, setPriority)
    /// The milliseconds on display that were requested; 0: until it is closed.
    TAVO_FIELD(int, timeout, setTimeout)
    /// How many of them were left when it came on display; fewer than timeout() once it has been
    /// pre-empted. 0 if there is no timeout.
    TAVO_FIELD(int, remaining, setRemaining)
    /// When it came on display, in milliseconds of CLOCK_MONOTONIC, as of
    /// QElapsedTimer::msecsSinceReference().
    TAVO_FIELD(qint64, since, setSince)
    /// How many notifications wait behind it.
    TAVO_FIELD(int, waiting, setWaiting)
};

/// The end of a display notification.
class TavoNotificationDisplayEnded : public TavoHash
{
    TAVO_RECORD(TavoNotificationDisplayEnded)

    /// Names the notification. Its node may be gone.
    TAVO_FIELD(CMPath, path, setPath)
    /// The id of the request; often empty.
    TAVO_FIELD(QString, id, setId)
    /// How it ended.
    TAVO_FIELD(TavoNotificationDisplayEnd::Enum, end, setEnd)
    /// The milliseconds of its timeout that were left; 0 if there is no timeout.
    TAVO_FIELD(int, remaining, setRemaining)
    /// Counts the ends, from 1.
    TAVO_FIELD(qint64, number, setNumber)
};

// So that a QList stores the records without a pointer.
Q_DECLARE_TYPEINFO(TavoNotificationDisplayItem, Q_MOVABLE_TYPE);
