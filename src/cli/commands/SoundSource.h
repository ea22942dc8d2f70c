// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/ExitCode.h"
#include "cli/Options.h"
#include <core/records/enumerations.h>

#include <QByteArray>
#include <QString>

#include <variant>

/// What is to be played, as the host takes it.
struct SoundSource
{
    TavoNotificationPlayerItemType::Enum type;
    QString content;
};

struct SoundSourceError
{
    ExitCode code;
    QString text;
};

/// The sound that was named: a URI as it is, a file's as an absolute URI once it is there and can
/// be read, standard input as data.
std::variant<SoundSource, SoundSourceError> soundSource(const Options &options);

/// The URI of a file; every byte of the name that a URI can't hold is escaped, so that a name need
/// not be UTF-8. A relative name is taken from the folder.
QString fileUri(const QByteArray &name, const QByteArray &folder);
