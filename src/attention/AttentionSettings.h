// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/DoNotDisturb.h"
#include "attention/Rules.h"
#include "attention/SourceRates.h"

#include <QMap>

/// What people decide about their notifications, in a file of their own.
struct AttentionSettings
{
    DoNotDisturbSettings doNotDisturb;
    Rules rules;
    SourceRates::Limit rate;
    int groupFrom = 5;         ///< so many messages of a source are shown as one; 0: never
    QStringList speechCommand; ///< the program that speaks, and its arguments; may be empty
    QMap<QString, QStringList>
        speechLanguages; ///< the same for texts in these languages, such as "de"
    QTimeZone zone;

    /// Without a file: no rules, and everything passes.
    AttentionSettings();

    /// A person's own file, and those of the system. The first one that is there counts. For the user of a service, whose
    /// home is /, only /etc/tavo/attention.json.
    static QStringList defaultFiles();

    /// The one of them that counts; the last one if none is there.
    static QString defaultFile();

    /// Throws a std::runtime_error with "FILE:LINE: KEY: REASON", or for syntax errors
    /// "FILE:LINE:COLUMN: REASON".
    static AttentionSettings fromJson(const QByteArray &json, const QString &file);

private:
    void readSpeech(TavoConfiguration configuration);
    static AttentionSettings read(TavoConfiguration configuration);
};
