// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

#include <limits>

namespace sdbus {
class Message;
}

/// The model's values in messages. Whatever the model may carry comes back equal.
///
/// Everything throws an sdbus::Error that names what is wrong with the value. A message that was
/// being written is of no use then. Thread: the message's.
namespace BusVariant {

/// How deep a bus lets values nest in a message, each list counting as two, each hash as three.
constexpr int deepest = 64;

/// What each value within a value counts in its size, beside its texts and bytes: about what it
/// takes in memory.
constexpr int bytesPerValue = 32;

constexpr int anySize = std::numeric_limits<int>::max();

/// What every bus carries in one message, beside the message's head. The system's throws out whoever
/// sends more than 32 MiB.
constexpr int mostMessageBytes = (1 << 25) - (1 << 16);

/// Appends the value as a variant. The depth says how many containers of the message it stands in.
/// Refused as BusErrors::unsupportedValue(): what is no plain data, texts with a character that a
/// message can't hold (null, half a surrogate pair, no character), what nests too deeply, and what
/// takes more bytes than that.
void append(sdbus::Message &message, const QVariant &value, int depth = 0, int mostBytes = anySize);

/// Reads the variant that is next. Containers that no value of the model has are read as the nearest
/// that it has: an array or a struct as a list. Refused as invalid arguments: file descriptors, and
/// dictionaries by anything but text; as a limit exceeded: a value of more than that many bytes.
QVariant read(sdbus::Message &message, int mostBytes = anySize);

/// Reads the text that is next.
QString readText(sdbus::Message &message);

/// Refused as append() does.
void appendText(sdbus::Message &message, const QString &text);

/// For texts that people read: never refused, it has a replacement character for each that a message
/// can't hold.
void appendShownText(sdbus::Message &message, const QString &text);

/// Such a text.
QString shownText(const QString &text);

} // namespace BusVariant
