// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetWatchCommand.h"

#include "base/Json.h"
#include "base/Printable.h"

namespace {
QString subjectOf(const FleetTopic &topic)
{
    switch (topic.kind) {
    case FleetTopic::Kind::Online:
        return QStringLiteral("online");
    case FleetTopic::Kind::Info:
        return QStringLiteral("info");
    case FleetTopic::Kind::State:
        return topic.detail;
    case FleetTopic::Kind::Answer:
        return QStringLiteral("answer");
    case FleetTopic::Kind::Event:
        return QStringLiteral("event");
    case FleetTopic::Kind::Call:
    case FleetTopic::Kind::GroupCall:
    case FleetTopic::Kind::GroupEnd:
        break;
    }
    return {};
}
} // namespace

QStringList FleetWatchCommand::filters() const
{
    const QString any = QStringLiteral("+");
    return {FleetTopics::state(any, any), FleetTopics::answer(any, any), FleetTopics::event(any)};
}

void FleetWatchCommand::onMessage(const FleetTopic &topic, const MqttMessage &message)
{
    const QString subject = subjectOf(topic);
    if (subject.isEmpty() || !isChosen(topic.name)) {
        return;
    }
    const auto read = fromJson(message.payload);
    const auto *value = std::get_if<QVariant>(&read);
    if (options().json) {
        // What is not JSON is of no device of ours.
        terminal().printJson(
            toJson(QVariantHash{{QStringLiteral("device"), topic.name},
                                {QStringLiteral("subject"), subject},
                                {QStringLiteral("value"), value == nullptr ? QVariant() : *value}},
                   JsonForm::Line));
        return;
    }
    constexpr int maxSize = 1000;
    const QString text = printable(shortened(QString::fromUtf8(message.payload), maxSize));
    terminal().print(QStringList{topic.name, subject, text}.join(QLatin1Char('\t')));
}

void FleetWatchCommand::onDisconnected(const QString &reason)
{
    FleetCommand::onDisconnected(reason);
    if (!isFinished()) {
        terminal().printError(QStringLiteral("the broker has gone, waiting for it: ") + reason);
    }
}

void FleetWatchCommand::interrupt(int /*signal*/)
{
    finish(ExitCode::Ok); // its usual end
}
