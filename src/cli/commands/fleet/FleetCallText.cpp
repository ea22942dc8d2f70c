// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetCallText.h"

#include "base/Json.h"
#include "cli/Moment.h"
#include "cli/Priority.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

#include <fleet/protocol/FleetTopics.h>

namespace {
QString text(const std::string &value)
{
    return QString::fromStdString(value);
}

QString callId(const Options &options)
{
    return options.id.empty() ? QUuid::createUuid().toString(QUuid::WithoutBraces)
                              : text(options.id);
}

void setMessage(FleetCall &call, const Options &options)
{
    call.title = text(options.fleetArgument);
    call.text = text(options.message);
    call.icon = text(options.icon);
    call.sound = text(options.file);
    call.isEverywhere = options.everywhere;
    if (options.timeout >= 0) {
        call.timeoutMs = options.timeout;
    }
    for (const std::string &action : options.actions) {
        call.actions.append({text(action).section(QLatin1Char('='), 0, 0),
                             text(action).section(QLatin1Char('='), 1)});
    }
}

std::optional<Failure> setStart(FleetCall &call, const Options &options)
{
    if (options.at.empty()) {
        return {};
    }
    const QDateTime now = QDateTime::currentDateTime();
    const auto moment = momentFromText(text(options.at), now);
    if (const auto *failure = std::get_if<Failure>(&moment)) {
        return *failure;
    }
    if (std::get<QDateTime>(moment) > now.addDays(1)) { // which devices refuse
        return Failure{QStringLiteral("%1 is more than a day from now").arg(text(options.at))};
    }
    call.at = std::get<QDateTime>(moment).toMSecsSinceEpoch();
    return {};
}

std::optional<Failure> setValue(FleetCall &call, const Options &options)
{
    if (options.message.empty()) {
        return {};
    }
    const QByteArray json = '[' + QByteArray::fromStdString(options.message) + "\n]";
    const QJsonArray values = QJsonDocument::fromJson(json).array();
    if (values.size() != 1) {
        return Failure{QStringLiteral("the value is not JSON. A string needs its quotes: "
                                      "'\"like this\"'")};
    }
    call.value = values.first();
    return {};
}

std::optional<Failure> setArguments(FleetCall &call, const Options &options)
{
    switch (call.kind) {
    case FleetCall::Kind::Show:
    case FleetCall::Kind::Notify:
        setMessage(call, options);
        break;
    case FleetCall::Kind::Sound:
        call.sound = text(options.fleetArgument);
        return setStart(call, options);
    case FleetCall::Kind::Say:
        call.text = text(options.fleetArgument);
        break;
    case FleetCall::Kind::Cancel:
        call.target = text(options.fleetArgument);
        break;
    case FleetCall::Kind::Call:
        call.path = text(options.fleetArgument);
        return setValue(call, options);
    case FleetCall::Kind::Ping:
        break;
    }
    return {};
}
} // namespace

Result<FleetCall> fleetCall(const Options &options)
{
    FleetCall call;
    call.id = callId(options);
    call.kind = FleetCall::kindFromName(text(options.fleetAction)).value();
    call.priority = *priorityFromText(options.priority);
    if (const auto failure = setArguments(call, options)) {
        return *failure;
    }
    // The devices read it by the same rules.
    const auto read = FleetCall::fromJson(call.toJson());
    if (const auto *bad = std::get_if<FleetCall::Bad>(&read)) {
        return Failure{bad->reason};
    }
    return call;
}

QVariantHash answerFields(const FleetAnswer &answer)
{
    switch (answer.kind) {
    case FleetAnswer::Kind::Shown:
        return {{QStringLiteral("shown"), true}};
    case FleetAnswer::Kind::Sounding:
        return {{QStringLiteral("sounding"), true}};
    case FleetAnswer::Kind::Done:
        return {{QStringLiteral("done"), answer.value.toVariant()}};
    case FleetAnswer::Kind::Error:
        break;
    }
    return {{QStringLiteral("error"), answer.error}};
}

QString answerText(const FleetAnswer &answer, FleetCall::Kind call)
{
    switch (answer.kind) {
    case FleetAnswer::Kind::Shown:
        return QStringLiteral("shown");
    case FleetAnswer::Kind::Sounding:
        return QStringLiteral("sounding");
    case FleetAnswer::Kind::Done: {
        if (call == FleetCall::Kind::Cancel) {
            return answer.value.toBool() ? QStringLiteral("ended")
                                         : QStringLiteral("nothing to end");
        }
        const bool hasValue = !answer.value.isNull() && !answer.value.isUndefined();
        const QByteArray value = toJson(answer.value.toVariant(), JsonForm::Line);
        return hasValue ? QStringLiteral("done: ") + QString::fromUtf8(value)
                        : QStringLiteral("done");
    }
    case FleetAnswer::Kind::Error:
        break;
    }
    return QStringLiteral("error: ") + answer.error;
}
