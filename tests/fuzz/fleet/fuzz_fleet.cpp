// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// What comes from a broker: the first line is a topic, the rest a payload. What is read can be written and read again,
// and names are as short and plain as they must be.

#include "core/base/stream.h"
#include "fuzz/support/Fuzz.h"

#include <fleet/protocol/FleetAnswer.h>
#include <fleet/protocol/FleetCall.h>
#include <fleet/protocol/FleetEvent.h>
#include <fleet/protocol/FleetTopics.h>

namespace {
void readTopic(const QString &topic)
{
    const auto read = FleetTopic::parse(topic);
    if (!read) {
        return;
    }
    FUZZ_CHECK(isFleetName(read->name), topic);
    FUZZ_CHECK(read->detail.isEmpty() || isFleetName(read->detail), topic);
    FUZZ_CHECK(topic.contains(read->name) && topic.endsWith(read->detail), topic);
}

/// Writing gives the same text again once it has been read.
template <typename Message>
void readMessage(const QByteArray &payload)
{
    const auto read = Message::fromJson(payload);
    const auto *message = std::get_if<Message>(&read);
    if (message == nullptr) {
        return;
    }
    FUZZ_CHECK(isFleetName(message->id), message->id);
    const QByteArray written = message->toJson();
    const auto again = Message::fromJson(written);
    FUZZ_CHECK(std::holds_alternative<Message>(again), written.constData());
    FUZZ_CHECK(std::get<Message>(again).toJson() == written, written.constData());
}
} // namespace

void fuzzOne(ByteReader &input)
{
    const QByteArray text = input.rest();
    const int end = text.indexOf('\n');
    readTopic(QString::fromUtf8(text.left(end)));
    const QByteArray payload = text.mid(end + 1);
    readMessage<FleetCall>(payload);
    readMessage<FleetAnswer>(payload);
    readMessage<FleetEvent>(payload);
}
