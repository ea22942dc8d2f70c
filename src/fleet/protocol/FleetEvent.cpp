// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/protocol/FleetEvent.h"

#include "fleet/protocol/JsonFields.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>

namespace {
using End = FleetEvent::End;

constexpr std::array<std::pair<const char *, End>, 6> ends{{{"expired", End::Expired},
                                                            {"closed", End::Closed},
                                                            {"dismissed", End::Dismissed},
                                                            {"action", End::Action},
                                                            {"finished", End::Finished},
                                                            {"failed", End::Failed}}};
} // namespace

QString FleetEvent::endName(End end)
{
    const auto *found = std::find_if(ends.begin(), ends.end(),
                                     [end](const auto &entry) { return entry.second == end; });
    return QLatin1String(found->first);
}

std::optional<FleetEvent::End> FleetEvent::endFromName(const QString &name)
{
    for (const auto &[known, end] : ends) {
        if (name == QLatin1String(known)) {
            return end;
        }
    }
    return {};
}

QByteArray FleetEvent::toJson() const
{
    QJsonObject object{{QStringLiteral("id"), id},
                       {QStringLiteral("device"), device},
                       {QStringLiteral("end"), endName(end)},
                       {QStringLiteral("time"), time}};
    if (!action.isEmpty()) {
        object.insert(QStringLiteral("action"), action);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Result<FleetEvent> FleetEvent::fromJson(const QByteArray &json)
{
    const auto object = jsonObject(json);
    if (const auto *failure = std::get_if<Failure>(&object)) {
        return *failure;
    }
    JsonFields fields(std::get<QJsonObject>(object));
    FleetEvent event;
    try {
        event.id = fields.name(QStringLiteral("id"));
        event.device = fields.name(QStringLiteral("device"));
        const auto end = endFromName(fields.string(QStringLiteral("end")));
        if (!end) {
            fields.fail(QStringLiteral("end"), QStringLiteral("is not one that there is"));
        }
        event.end = *end;
        event.action = fields.string(QStringLiteral("action"));
        event.time = fields.integer(QStringLiteral("time"), 0, 0, JsonFields::maxExact);
    } catch (const JsonFields::Error &error) {
        return error.failure;
    }
    return event;
}
