// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QString>

// Records carry enumerators as numbers. Every signed 32-bit number is allowed, so that a value
// from a newer program is kept. toString() returns the name, or the digits if the number has none.

/// How urgent a notification is. Larger numbers go first; equal ones keep their order of arrival.
struct TAVO_API_EXPORT TavoNotificationItemPriority
{
    /// The numbers that have names.
    enum Enum : int { Low = 0, Normal = 1, High = 2, Urgent = 3 };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// The kind of a sound's content.
struct TAVO_API_EXPORT TavoNotificationPlayerItemType
{
    /// The numbers that have names.
    enum Enum : int {
        Uri = 0,    ///< a URI or a file's path
        Data = 1,   ///< a sound file in base64
        Stream = 2, ///< a stream's source; the item has its media type
        Fake = 3    ///< nothing: a silent placeholder
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// The event that a sound's response reports.
struct TAVO_API_EXPORT TavoNotificationPlayerResponseType
{
    /// The numbers that have names.
    enum Enum : int {
        Unknown = 0,
        Started = 1,
        Finished = 2,  ///< played to the end
        Cancelled = 3, ///< stopped, or never started
        Failed = 4     ///< the cause is in the log
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// How a display notification ended.
struct TAVO_API_EXPORT TavoNotificationDisplayEnd
{
    /// The numbers that have names.
    enum Enum : int {
        Unknown = 0,
        Expired = 1,   ///< after its timeout
        Cancelled = 2, ///< by a request to cancel it
        Closed = 3,    ///< its node was closed, as a person does
        Overtaken =
            4 ///< after its timeout, by a more urgent one that came just before it was closed
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// How a notification ended that people's rules had to allow.
struct TAVO_API_EXPORT TavoAttentionEnd
{
    /// The numbers that have names.
    enum Enum : int {
        Unknown = 0,
        Expired = 1,   ///< after its timeout, or at the end of its sound
        Closed = 2,    ///< by a request
        Dismissed = 3, ///< by a person
        ActedOn = 4,   ///< by a person, who chose an action
        Silenced = 5,  ///< rules or do-not-disturb kept it from people
        Failed = 6     ///< it could be neither shown nor played
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// What became of a notification of the past.
struct TAVO_API_EXPORT TavoAttentionState
{
    /// The numbers that have names.
    enum Enum : int {
        Unknown = 0,
        Shown = 1,     ///< it is open
        Seen = 2,      ///< by a person, in its group or in the history; or its sound was heard
        Dismissed = 3, ///< by a person, or closed by a request
        ActedOn = 4,   ///< by a person, who chose an action
        Expired = 5,   ///< nobody has seen it
        Silenced = 6,  ///< nobody has seen it
        Refused = 7,   ///< it could be neither shown nor played
        LeftOpen =
            8 ///< it was on display or waited for it when the host ended; nobody has closed it
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// The resources that the power manager grants.
struct TAVO_API_EXPORT TavoPowerManagerResources
{
    /// The numbers that have names.
    enum Enum : int { Processor = 0, Display = 1, Audio = 2, Network = 3 };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// The actions of a module on a resource.
struct TAVO_API_EXPORT TavoPowerModuleActions
{
    /// The numbers that have names.
    enum Enum : int { None = 0, Acquire = 1, Release = 2 };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// The kinds of messages that the power manager sends to a module whose resources it revokes.
struct TAVO_API_EXPORT TavoPowerManagerRevokeMessageType
{
    /// The numbers that have names.
    enum Enum : int {
        Revoked = 0,    ///< the resources are gone, stop now
        PostRevoked = 1 ///< every module has stopped; informational
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// The kinds of rows in a user interface.
struct TAVO_API_EXPORT TavoRolesType
{
    /// The numbers that have names.
    enum Enum : int {
        None = 0,
        Container = 1, ///< leads to more rows
        Action = 2,    ///< can be activated
        Value = 3,
        Switch = 4,
        Media = 5,
        Text = 6 ///< a text to read
    };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};

/// Which roles the rows of a list carry.
struct TAVO_API_EXPORT TavoRowsRolesType
{
    /// The numbers that have names.
    enum Enum : int { Title = 0, Value = 1, Path = 2 };
    /// The name, or the digits of a number that has none.
    static QString toString(Enum value);
};
