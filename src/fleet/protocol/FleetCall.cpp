// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/protocol/FleetCall.h"

#include "fleet/protocol/FleetTopics.h"
#include "fleet/protocol/JsonFields.h"

#include <QDateTime>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <limits>

namespace {
using Kind = FleetCall::Kind;

constexpr std::array<std::pair<const char *, Kind>, 7> kinds{{{"show", Kind::Show},
                                                              {"sound", Kind::Sound},
                                                              {"notify", Kind::Notify},
                                                              {"say", Kind::Say},
                                                              {"cancel", Kind::Cancel},
                                                              {"call", Kind::Call},
                                                              {"ping", Kind::Ping}}};
constexpr std::array<const char *, 4> priorities{"low", "normal", "high", "urgent"};
constexpr int maxTimeoutMs = 86400000;
constexpr int maxActions = 16;

void readPriority(JsonFields &fields, FleetCall &call)
{
    const auto key = QStringLiteral("priority");
    const QJsonValue value = fields.take(key);
    if (value.isString()) {
        const auto found =
            std::find_if(priorities.begin(), priorities.end(), [&](const char *name) {
                return value.toString().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
            });
        if (found == priorities.end()) {
            fields.fail(key, QStringLiteral("must be low, normal, high, urgent or a number"));
        }
        call.priority = int(found - priorities.begin());
    } else {
        call.priority =
            int(fields.integer(key, value, call.priority, std::numeric_limits<int>::min(),
                               std::numeric_limits<int>::max()));
    }
}

void readActions(JsonFields &fields, FleetCall &call)
{
    const auto key = QStringLiteral("actions");
    const QJsonValue value = fields.take(key);
    if (value.isUndefined()) {
        return;
    }
    const QJsonObject actions = value.toObject();
    if (!value.isObject() || actions.size() > maxActions) {
        fields.fail(key, QStringLiteral("must be an object with at most %1 keys").arg(maxActions));
    }
    for (auto action = actions.begin(); action != actions.end(); ++action) {
        if (!action.value().isString()) {
            fields.fail(key, QStringLiteral("must have strings only"));
        }
        call.actions.append({action.key(), action.value().toString()});
    }
}

void readMessage(JsonFields &fields, FleetCall &call)
{
    call.title = fields.string(QStringLiteral("title"));
    call.text = fields.string(QStringLiteral("text"));
    call.icon = fields.string(QStringLiteral("icon"));
    call.sound = fields.string(QStringLiteral("sound"));
    readPriority(fields, call);
    call.timeoutMs =
        int(fields.integer(QStringLiteral("timeout"), FleetCall::defaultTimeout, 0, maxTimeoutMs));
    readActions(fields, call);
    call.isEverywhere = fields.boolean(QStringLiteral("everywhere"));
    if (call.title.isEmpty() && call.text.isEmpty()) {
        fields.fail(QStringLiteral("title"),
                    QStringLiteral("must not be empty if there is no text"));
    }
}

/// Milliseconds since the epoch, or a time in the format of ISO 8601.
qint64 readTime(JsonFields &fields, const QString &key)
{
    const QJsonValue value = fields.take(key);
    if (!value.isString()) {
        return fields.integer(key, value, 0, 0, JsonFields::maxExact);
    }
    const QDateTime time = QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
    if (!time.isValid() || time.toMSecsSinceEpoch() < 0) {
        fields.fail(key,
                    QStringLiteral("must be a time such as 2026-01-31T07:00:00Z, or milliseconds "
                                   "since 1970"));
    }
    return time.toMSecsSinceEpoch();
}

QString readNonEmpty(JsonFields &fields, const QString &key)
{
    QString text = fields.string(key);
    if (text.isEmpty()) {
        fields.fail(key, QStringLiteral("is missing"));
    }
    return text;
}

void readArguments(JsonFields &fields, FleetCall &call)
{
    switch (call.kind) {
    case Kind::Show:
    case Kind::Notify:
        readMessage(fields, call);
        break;
    case Kind::Sound:
        call.sound = readNonEmpty(fields, QStringLiteral("sound"));
        readPriority(fields, call);
        call.at = readTime(fields, QStringLiteral("at"));
        break;
    case Kind::Say:
        call.text = readNonEmpty(fields, QStringLiteral("text"));
        readPriority(fields, call);
        break;
    case Kind::Cancel:
        call.target = fields.name(QStringLiteral("target"));
        break;
    case Kind::Call:
        call.path = readNonEmpty(fields, QStringLiteral("path"));
        call.value = fields.take(QStringLiteral("value"));
        break;
    case Kind::Ping:
        break;
    }
}

void readCall(JsonFields &fields, FleetCall &call)
{
    call.id = fields.name(QStringLiteral("id"));
    if (fields.has(QStringLiteral("from"))) {
        call.from = fields.name(QStringLiteral("from"));
    }
    const QString name = fields.string(QStringLiteral("call"));
    const auto kind = FleetCall::kindFromName(name);
    if (!kind) {
        fields.fail(QStringLiteral("call"), QStringLiteral("is not one that there is"));
    }
    call.kind = *kind;
    call.expires = readTime(fields, QStringLiteral("expires"));
    readArguments(fields, call);
    fields.finish();
}

QString nameOrNothing(const QJsonValue &value)
{
    const QString name = value.toString();
    return isFleetName(name) ? name : QString();
}

void insertMessage(QJsonObject &object, const FleetCall &call)
{
    const auto insertText = [&object](const char *key, const QString &text) {
        if (!text.isEmpty()) {
            object.insert(QLatin1String(key), text);
        }
    };
    insertText("title", call.title);
    insertText("text", call.text);
    insertText("icon", call.icon);
    insertText("sound", call.sound);
    if (call.timeoutMs != FleetCall::defaultTimeout) {
        object.insert(QStringLiteral("timeout"), call.timeoutMs);
    }
    if (!call.actions.isEmpty()) {
        QJsonObject actions;
        for (const auto &action : call.actions) {
            actions.insert(action.key, action.label);
        }
        object.insert(QStringLiteral("actions"), actions);
    }
    if (call.isEverywhere) {
        object.insert(QStringLiteral("everywhere"), true);
    }
}
} // namespace

QString FleetCall::kindName(Kind kind)
{
    const auto *found = std::find_if(kinds.begin(), kinds.end(),
                                     [kind](const auto &entry) { return entry.second == kind; });
    return QLatin1String(found->first);
}

std::optional<FleetCall::Kind> FleetCall::kindFromName(const QString &name)
{
    for (const auto &[known, kind] : kinds) {
        if (name == QLatin1String(known)) {
            return kind;
        }
    }
    return {};
}

QByteArray FleetCall::toJson() const
{
    QJsonObject object{{QStringLiteral("id"), id}, {QStringLiteral("call"), kindName(kind)}};
    if (!from.isEmpty()) {
        object.insert(QStringLiteral("from"), from);
    }
    if (expires != 0) {
        object.insert(QStringLiteral("expires"), expires);
    }
    insertMessage(object, *this);
    if (kind == Kind::Show || kind == Kind::Notify || kind == Kind::Sound || kind == Kind::Say) {
        object.insert(QStringLiteral("priority"), priority);
    }
    if (at != 0) {
        object.insert(QStringLiteral("at"), at);
    }
    if (kind == Kind::Cancel) {
        object.insert(QStringLiteral("target"), target);
    }
    if (kind == Kind::Call) {
        object.insert(QStringLiteral("path"), path);
        object.insert(QStringLiteral("value"), value);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Result<FleetCall, FleetCall::Bad> FleetCall::fromJson(const QByteArray &json)
{
    const auto object = jsonObject(json);
    if (const auto *failure = std::get_if<Failure>(&object)) {
        return Bad{*failure, {}, {}};
    }
    JsonFields fields(std::get<QJsonObject>(object));
    FleetCall call;
    try {
        readCall(fields, call);
    } catch (const JsonFields::Error &error) {
        return Bad{error.failure, nameOrNothing(fields.all().value(QLatin1String("id"))),
                   nameOrNothing(fields.all().value(QLatin1String("from")))};
    }
    return call;
}
