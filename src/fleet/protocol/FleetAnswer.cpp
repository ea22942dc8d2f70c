// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/protocol/FleetAnswer.h"

#include "fleet/protocol/JsonFields.h"

#include <QJsonDocument>

namespace {
using Kind = FleetAnswer::Kind;

void readOutcome(JsonFields &fields, FleetAnswer &answer)
{
    if (fields.has(QStringLiteral("error"))) {
        answer.kind = Kind::Error;
        answer.error = fields.string(QStringLiteral("error"));
    } else if (fields.boolean(QStringLiteral("shown"))) {
        answer.kind = Kind::Shown;
    } else if (fields.boolean(QStringLiteral("sounding"))) {
        answer.kind = Kind::Sounding;
    } else if (fields.has(QStringLiteral("done"))) {
        answer.kind = Kind::Done;
        answer.value = fields.take(QStringLiteral("done"));
    } else {
        fields.fail(QStringLiteral("id"), QStringLiteral("comes without an answer"));
    }
}
} // namespace

QByteArray FleetAnswer::toJson() const
{
    if (kind == Kind::Shown || kind == Kind::Sounding) {
        // Nothing in it needs an escape, and Qt would take ten times as long.
        return "{\"device\":\"" + device.toLatin1() + "\",\"id\":\"" + id.toLatin1() +
               (kind == Kind::Shown ? "\",\"shown\":true}" : "\",\"sounding\":true}");
    }
    const auto outcome = kind == Kind::Done ? std::pair(QStringLiteral("done"), value)
                                            : std::pair(QStringLiteral("error"), QJsonValue(error));
    const QJsonObject object{{QStringLiteral("id"), id},
                             {QStringLiteral("device"), device},
                             {outcome.first, outcome.second}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Result<FleetAnswer> FleetAnswer::fromJson(const QByteArray &json)
{
    const auto object = jsonObject(json);
    if (const auto *failure = std::get_if<Failure>(&object)) {
        return *failure;
    }
    JsonFields fields(std::get<QJsonObject>(object));
    FleetAnswer answer;
    try {
        answer.id = fields.name(QStringLiteral("id"));
        answer.device = fields.name(QStringLiteral("device"));
        readOutcome(fields, answer);
    } catch (const JsonFields::Error &error) {
        return error.failure;
    }
    return answer;
}
