// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/DoNotDisturb.h"
#include "attention/Rules.h"

#include <optional>
#include <vector>

/// What becomes of a notification.
struct Decision
{
    Treatment treatment;
    std::vector<std::size_t> rules; ///< those that apply, by their index
    TavoNotificationItemPriority::Enum priority{};
    bool isShown = true;
    bool isHeard = true;
    bool isSpoken = false;
    bool isRemembered = true; ///< by the history
    bool isQuiet = false;     ///< kept from people because they do not want to be disturbed
    QString reason;           ///< why it is kept from people, or passes all the same; may be empty

    /// Decides by the rules, and by do-not-disturb at the notification's time.
    static Decision of(const AttentionInput &input, const Rules &rules,
                       const DoNotDisturb &doNotDisturb);

    /// The same; nothing if the rules might take long.
    static std::optional<Decision> atOnce(const AttentionInput &input, const Rules &rules,
                                          const DoNotDisturb &doNotDisturb);

    /// How long its message is displayed, in ms, if its sender wants it to be this long; 0: until it is
    /// closed.
    int timeout(int requested) const;

    bool isKept() const { return !isShown && !isHeard && !isSpoken; }

    /// Keeps it from people.
    void silence(const QString &why);

private:
    static Decision by(std::vector<std::size_t> matching, AttentionInput input, const Rules &rules,
                       const DoNotDisturb &doNotDisturb);
    void silence(DoNotDisturbSettings::Silence silence);
};
