// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/notifications.h"
#include "core/records/tavolist.h"

/// The path of the module, below which its nodes are.
TAVO_API_EXPORT CMPath TavoAttentionPath();

/// Request: notifies people of something, by a message, a sound or both, as their rules and
/// do-not-disturb allow. Value: a TavoValue with attentionItem(). Reply: a TavoValue with
/// attentionOutcome().
TAVO_API_EXPORT CMPath TavoAttentionNotifyPath();

/// Request: changes an open notification. Value and reply: as for TavoAttentionNotifyPath(); the item
/// has the notification's id. What its message and sound are already decided to be stays.
TAVO_API_EXPORT CMPath TavoAttentionReplacePath();

/// Request: ends a notification's message and sound. Value: a TavoValue with string_(), the id; or, from a
/// requester with a node of its own, attentionEnded(), of which id(), end() and action() count. Reply:
/// empty.
TAVO_API_EXPORT CMPath TavoAttentionClosePath();

/// Request: plays the sound of an open notification, for a requester that sends message and sound apart.
/// Value: a TavoValue with string_(), the notification's id, and notificationPlayerItem(); without an item,
/// there is no sound after all. Reply: a TavoValue with int_(), the priority that the sound has; empty if it is
/// kept from people; or the player's error. The item's response path gets its
/// responses; if the sound is kept from people, that it was cancelled.
TAVO_API_EXPORT CMPath TavoAttentionSoundPath();

/// Value: a TavoValue with attentionEnded(), the notification that ended last. It changes once for each,
/// when both its message and its sound have ended. No two values are equal, so every subscriber gets
/// every end.
TAVO_API_EXPORT CMPath TavoAttentionEndedPath();

/// Value: a TavoValue with attentionDoNotDisturb(), whether people want to be disturbed now.
TAVO_API_EXPORT CMPath TavoAttentionDoNotDisturbPath();

/// Request: a person's choice about it. Value: a TavoValue with attentionDoNotDisturb(), of which on() and
/// until() count. Reply: empty.
TAVO_API_EXPORT CMPath TavoAttentionSetDoNotDisturbPath();

/// Request: a program does not want people to be disturbed while it does something, such as showing slides.
/// Do-not-disturb is on while there is such an inhibition; a person's choice to switch it off ends all of
/// them. Value: a TavoValue with attentionInhibition(). Reply: empty.
TAVO_API_EXPORT CMPath TavoAttentionInhibitPath();

/// Value: a TavoValue with attentionRules(): the rules, and how many notifications each has applied to.
TAVO_API_EXPORT CMPath TavoAttentionRulesPath();

/// Request: what would become of a notification now. Nothing is shown, played or counted. Value: a
/// TavoValue with attentionItem(). Reply: a TavoValue with attentionTrial().
TAVO_API_EXPORT CMPath TavoAttentionTryPath();

/// Request: notifications of the past, the newest first. Value: a TavoValue with attentionQuery(). Reply:
/// a TavoValue with attentionPage().
TAVO_API_EXPORT CMPath TavoAttentionHistoryPath();

/// Value: a TavoValue with attentionHistory(): whether notifications are remembered. It changes when the history does.
TAVO_API_EXPORT CMPath TavoAttentionHistoryStatePath();

/// Value: a TavoValue with int_(), how many notifications of the past nobody has seen.
TAVO_API_EXPORT CMPath TavoAttentionMissedPath();

/// Request: somebody has seen these notifications of the past. Value: a TavoValue with
/// attentionQuery(), of which before() and from() count; both 0: all. Reply: empty.
TAVO_API_EXPORT CMPath TavoAttentionMarkSeenPath();

/// The parent of the nodes that the module makes for messages.
TAVO_API_EXPORT CMPath TavoAttentionMessagesPath();

/// What a person can choose to do about a notification.
class TavoAttentionAction : public TavoHash
{
    TAVO_RECORD(TavoAttentionAction)

    /// By which the requester knows it. "default" is the action of the whole notification.
    TAVO_FIELD(QString, key, setKey)
    /// What people read.
    TAVO_FIELD(TrString, label, setLabel)
    /// Beside the label, as for the notification; may be empty.
    TAVO_FIELD(QString, icon, setIcon)
};

/// A request to notify people of something.
class TavoAttentionItem : public TavoHash
{
    TAVO_RECORD(TavoAttentionItem)

    /// Chosen by the requester; must not be that of an open notification. If it is empty, the module
    /// chooses one.
    TAVO_FIELD(QString, id, setId)
    /// One line.
    TAVO_FIELD(TrString, title, setTitle)
    /// The message.
    TAVO_FIELD(TrString, text, setText)
    /// A node of the requester that shows the notification. If it is empty, the module makes one of the
    /// title and the text.
    TAVO_FIELD(CMPath, path, setPath)
    /// The program's name, for people.
    TAVO_FIELD(QString, application, setApplication)
    /// The program's name, for rules; if it is empty, that for people.
    TAVO_FIELD(QString, source, setSource)
    /// Whose program it is, if not of the host's user. Texts of users are read aloud by turns, and each fills
    /// at most a tenth of the history in an hour.
    TAVO_FIELD(QString, user, setUser)
    /// A name in an icon theme, a path or a file: URI.
    TAVO_FIELD(QString, icon, setIcon)
    /// Such as "im.received".
    TAVO_FIELD(QString, category, setCategory)
    /// Messages of a group may be shown as one. If it is empty, those of a source are a group.
    TAVO_FIELD(QString, group, setGroup)
    /// Of message and sound.
    TAVO_FIELD(TavoNotificationItemPriority::Enum, priority, setPriority)
    /// Milliseconds on display; 0 or less: until closed.
    TAVO_FIELD(int, timeout, setTimeout)
    /// The first 64 count, and of equal keys the first.
    TAVO_FIELD(TavoList<TavoAttentionAction>, actions, setActions)
    /// What to play, without a response path. The id may be empty.
    TAVO_FIELD(TavoNotificationPlayerItem, sound, setSound)
    /// The requester sends the sound by TavoAttentionSoundPath(). The notification stays open until then.
    TAVO_FIELD(bool, soundFollows, setSoundFollows)
    /// Read aloud, after its sound.
    TAVO_FIELD(QString, speech, setSpeech)
    /// The language of what is read aloud, such as "de"; if it is empty, the script tells it.
    TAVO_FIELD(QString, language, setLanguage)
    /// To replace one that is open: nothing is decided anew, it only gets the priority if that is lower.
    TAVO_FIELD(bool, givesWay, setGivesWay)
    /// Not worth keeping: the history has no text of it.
    TAVO_FIELD_KEY(bool, isTransient, setTransient, "transient")
};

/// What has become of a request to notify people.
class TavoAttentionOutcome : public TavoHash
{
    TAVO_RECORD(TavoAttentionOutcome)

    /// The id of the notification.
    TAVO_FIELD(QString, id, setId)
    /// Its message is open: on display, or waiting for it.
    TAVO_FIELD(bool, shown, setShown)
    /// Its sound is queued.
    TAVO_FIELD(bool, sounding, setSounding)
    /// Why something is kept from people; empty if nothing is.
    TAVO_FIELD(QString, reason, setReason)
    /// The names of the rules that applied.
    TAVO_FIELD(TavoList<QString>, rules, setRules)
};

/// The end of a notification.
class TavoAttentionEnded : public TavoHash
{
    TAVO_RECORD(TavoAttentionEnded)

    /// The id of the notification.
    TAVO_FIELD(QString, id, setId)
    /// How it ended.
    TAVO_FIELD(TavoAttentionEnd::Enum, end, setEnd)
    /// The key of the action that a person chose, if one did.
    TAVO_FIELD(QString, action, setAction)
    /// When its message was closed, in milliseconds since the epoch (UTC); 0: it had none, or it was kept
    /// from people.
    TAVO_FIELD(qint64, shownUntil, setShownUntil)
    /// When its sound ended, likewise.
    TAVO_FIELD(qint64, heardUntil, setHeardUntil)
    /// Counts the ends, from 1.
    TAVO_FIELD(qint64, number, setNumber)
};

/// A program's request that people are not disturbed.
class TavoAttentionInhibition : public TavoHash
{
    TAVO_RECORD(TavoAttentionInhibition)

    /// Chosen by the requester. A value of do-not-disturb does not have it.
    TAVO_FIELD(QString, id, setId)
    /// The inhibition begins, or changes; otherwise it ends.
    TAVO_FIELD(bool, on, setOn)
    /// The program's name, for people.
    TAVO_FIELD(QString, application, setApplication)
    /// Why, for people; may be empty.
    TAVO_FIELD(QString, reason, setReason)
};

/// Whether people want to be disturbed.
class TavoAttentionDoNotDisturb : public TavoHash
{
    TAVO_RECORD(TavoAttentionDoNotDisturb)

    /// They do not want to be disturbed.
    TAVO_FIELD(bool, on, setOn)
    /// When it changes by itself, in milliseconds since the epoch (UTC); 0: never.
    TAVO_FIELD(qint64, until, setUntil)
    /// A person has chosen it; the schedule counts again afterwards.
    TAVO_FIELD(bool, chosen, setChosen)
    /// The programs that keep it on, 20 at most.
    TAVO_FIELD(TavoList<TavoAttentionInhibition>, inhibitions, setInhibitions)
};

/// A rule, by its name, and how often it has applied.
class TavoAttentionRule : public TavoHash
{
    TAVO_RECORD(TavoAttentionRule)

    /// The name of the rule.
    TAVO_FIELD(QString, name, setName)
    /// How many notifications it has applied to since it was read.
    TAVO_FIELD(qint64, count, setCount)
};

/// The rules, in their order.
class TavoAttentionRules : public TavoHash
{
    TAVO_RECORD(TavoAttentionRules)

    /// The file that they are read from.
    TAVO_FIELD(QString, file, setFile)
    /// It has been read. A file that does not exist is read when somebody makes it.
    TAVO_FIELD_KEY(bool, isRead, setRead, "read")
    /// What is wrong with the file, while the last good rules go on; empty if nothing is.
    TAVO_FIELD(QString, error, setError)
    /// The rules in use.
    TAVO_FIELD(TavoList<TavoAttentionRule>, rules, setRules)
};

/// Whether a rule applies to a notification.
class TavoAttentionVerdict : public TavoHash
{
    TAVO_RECORD(TavoAttentionVerdict)

    /// The name of the rule.
    TAVO_FIELD(QString, rule, setRule)
    /// It applies.
    TAVO_FIELD(bool, applies, setApplies)
    /// What it sets if it applies; otherwise why it does not.
    TAVO_FIELD(QString, reason, setReason)
};

/// What would become of a notification.
class TavoAttentionTrial : public TavoHash
{
    TAVO_RECORD(TavoAttentionTrial)

    /// One for each rule, in their order.
    TAVO_FIELD(TavoList<TavoAttentionVerdict>, verdicts, setVerdicts)
    /// Its message would be shown.
    TAVO_FIELD(bool, shown, setShown)
    /// Its sound would be played.
    TAVO_FIELD(bool, sounding, setSounding)
    /// It would be read aloud.
    TAVO_FIELD(bool, spoken, setSpoken)
    /// Of message and sound.
    TAVO_FIELD(TavoNotificationItemPriority::Enum, priority, setPriority)
    /// Milliseconds on display; 0: until closed.
    TAVO_FIELD(int, timeout, setTimeout)
    /// Why something is kept from people, or why it passes although they do not want to be disturbed.
    TAVO_FIELD(QString, reason, setReason)
};

/// Whether notifications are remembered.
class TavoAttentionHistory : public TavoHash
{
    TAVO_RECORD(TavoAttentionHistory)

    /// They are.
    TAVO_FIELD(bool, kept, setKept)
    /// The file that they are kept in; empty if the configuration names none.
    TAVO_FIELD(QString, file, setFile)
    /// Why they are not kept.
    TAVO_FIELD(QString, reason, setReason)
    /// Counts up when notifications have come or changed, once for all that are written together.
    TAVO_FIELD(qint64, changes, setChanges)
};

/// Which notifications of the past.
class TavoAttentionQuery : public TavoHash
{
    TAVO_RECORD(TavoAttentionQuery)

    /// Those with smaller numbers; 0: the newest ones.
    TAVO_FIELD(qint64, before, setBefore)
    /// For TavoAttentionMarkSeenPath(): those with this number and larger ones.
    TAVO_FIELD(qint64, from, setFrom)
    /// At most so many, up to 200; 0: 50.
    TAVO_FIELD(int, limit, setLimit)
    /// Only those with these words in their title or text; beginnings of words suffice.
    TAVO_FIELD(QString, search, setSearch)
    /// The program's name, for rules.
    TAVO_FIELD(QString, source, setSource)
    /// Only those that nobody has seen.
    TAVO_FIELD(bool, missed, setMissed)
};

/// A notification of the past.
class TavoAttentionRecord : public TavoHash
{
    TAVO_RECORD(TavoAttentionRecord)

    /// Counts the notifications, from 1.
    TAVO_FIELD(qint64, number, setNumber)
    /// The id of the notification.
    TAVO_FIELD(QString, id, setId)
    /// When it came, in milliseconds since the epoch (UTC).
    TAVO_FIELD(qint64, time, setTime)
    /// When it ended, likewise; 0: it is open.
    TAVO_FIELD(qint64, endTime, setEndTime)
    /// The program's name, for rules.
    TAVO_FIELD(QString, source, setSource)
    /// The program's name, for people.
    TAVO_FIELD(QString, application, setApplication)
    /// Such as "im.received".
    TAVO_FIELD(QString, category, setCategory)
    /// Of message and sound.
    TAVO_FIELD(TavoNotificationItemPriority::Enum, priority, setPriority)
    /// One line.
    TAVO_FIELD(QString, title, setTitle)
    /// The message.
    TAVO_FIELD(QString, text, setText)
    /// What became of it.
    TAVO_FIELD(TavoAttentionState::Enum, state, setState)
    /// The key of the action that a person chose, if one did.
    TAVO_FIELD(QString, action, setAction)
};

/// Notifications of the past, the newest first.
class TavoAttentionPage : public TavoHash
{
    TAVO_RECORD(TavoAttentionPage)

    /// The notifications.
    TAVO_FIELD(TavoList<TavoAttentionRecord>, records, setRecords)
    /// What before() must be for the next page; 0 if there is none. A page may be short, or even empty,
    /// although more follow.
    TAVO_FIELD(qint64, next, setNext)
};
