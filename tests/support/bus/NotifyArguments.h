// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Text.h"
#include <bus/BusWriter.h>

#include <QStringList>

/// What a test says of a desktop notification with the title "Title".
struct NotifyArguments
{
    quint32 replacedId = 0;
    int timeout = 0;
    QString program{};
    QStringList actions{};
    QString soundName{};

    /// Writes the arguments of a call of Notify.
    void writeTo(BusWriter &writer) const
    {
        writer.writeString(program);
        writer.writeUInt32(replacedId);
        for (const QString &text : {QString(), "Title"_s, QString()}) {
            writer.writeString(text);
        }
        writer.writeStringList(actions);
        writer.openArray("{sv}");
        if (!soundName.isEmpty()) {
            writer.openDictEntry("sv");
            writer.writeString("sound-name"_s);
            writer.writeVariant(soundName);
            writer.close();
        }
        writer.close();
        writer.writeInt32(timeout);
    }
};
