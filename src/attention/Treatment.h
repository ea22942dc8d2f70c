// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/enumerations.h>

#include <QString>

#include <optional>

/// What rules want to become of a notification. What is not set stays as its sender wants it.
struct Treatment
{
    std::optional<TavoNotificationItemPriority::Enum> priority{};
    std::optional<int> timeout{};     ///< ms on display; 0: until it is closed
    std::optional<QString> sound{};   ///< a path or a URI, in place of the sender's
    std::optional<int> attenuation{}; ///< dB by which sounds and speech are quieter
    std::optional<QString> group{};   ///< its messages may be shown as one
    std::optional<int> groupFrom{};   ///< so many messages are shown as one; 0: never
    std::optional<QString> chime{};   ///< played before the speech: a path or a URI
    std::optional<bool> mute{};       ///< no sound
    std::optional<bool> hide{};       ///< no message
    std::optional<bool> drop{};       ///< neither, and no speech
    std::optional<bool> speak{};      ///< read aloud
    std::optional<bool> pass{};       ///< also while people do not want to be disturbed
    std::optional<bool> isPrivate{};  ///< the history keeps no text
    std::optional<bool> mustSee{};    ///< opened again after a restart, until a person closes it

    /// What the other wants goes before what this one wants.
    void add(const Treatment &other);

    /// Such as "priority Urgent, mute".
    QString toString() const;
};
