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
    QJsonObject object{{QStringLiteral("id"), id}, {QStringLiteral("device"), device}};
    switch (kind) {
    case Kind::Shown:
        object.insert(QStringLiteral("shown"), true);
        break;
    case Kind::Sounding:
        object.insert(QStringLiteral("sounding"), true);
        break;
    case Kind::Done:
        object.insert(QStringLiteral("done"), value);
        break;
    case Kind::Error:
        object.insert(QStringLiteral("error"), error);
        break;
    }
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
