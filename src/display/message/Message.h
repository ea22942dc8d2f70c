// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/records/cmpath.h>

#include <QImage>
#include <QString>
#include <QVector>

#include <tuple>

/// A picture: pixels, or the name of an icon or a file.
struct Picture
{
    QImage pixels;
    QString source; ///< a name in an icon theme, an absolute path or a file: URI

    bool isEmpty() const { return pixels.isNull() && source.isEmpty(); }
    bool operator==(const Picture &other) const
    {
        return pixels == other.pixels && source == other.source;
    }
};

/// A button of a message.
struct MessageAction
{
    CMPath path;
    QString label;
    QString icon; ///< a name in an icon theme; shown instead of the label

    bool operator==(const MessageAction &other) const
    {
        return path == other.path && label == other.label && icon == other.icon;
    }
};

/// What a message says, as it may be shown: every text is limited.
struct Message
{
    static constexpr int noValue = -1;
    static constexpr int maxActions = 8;
    static constexpr int maxListed = 50; ///< in a group

    QString title;
    QString text;
    QString styled;       ///< the text in the form of styledText(); empty if it has no tags
    bool isGroup = false; ///< stands for several; each action opens one of them
    QString application;
    Picture picture;
    int value = noValue; ///< a progress from 0 to 100
    QVector<MessageAction> actions;
    CMPath defaultAction; ///< of a click on the message; empty if there is none
    bool isWhole = true;  ///< false while the rest of a long text is being read

    bool operator==(const Message &other) const
    {
        const auto parts = [](const Message &message) {
            return std::tie(message.title, message.text, message.styled, message.isGroup,
                            message.application, message.picture, message.value, message.actions,
                            message.defaultAction, message.isWhole);
        };
        return parts(*this) == parts(other);
    }
};
