// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"
#include <core/records/enumerations.h>

#include <QByteArray>
#include <QString>

/// What to play, in the form that the host takes.
struct SoundSource
{
    TavoNotificationPlayerItemType::Enum type;
    QString content;
};

/// The sound to play: a URI unchanged, a readable file as an absolute URI, standard input as data.
Result<SoundSource, ExitFailure> soundSource(const Options &options);

/// The URI of a file, whose name need not be UTF-8. A relative name is resolved against the folder.
QString fileUri(const QByteArray &name, const QByteArray &folder);
