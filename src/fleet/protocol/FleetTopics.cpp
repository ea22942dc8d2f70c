// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/protocol/FleetTopics.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <utility>

namespace {
constexpr int maxNameLength = 64;
constexpr auto root = "tavo/v1/";

bool isNameCharacter(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
           (code >= '0' && code <= '9') || code == '.' || code == '_' || code == '-';
}

QString ofDevice(const QString &device, const char *rest)
{
    return QLatin1String(root) + device + QLatin1Char('/') + QLatin1String(rest);
}

struct Form
{
    const char *word;
    FleetTopic::Kind kind;
    bool hasDetail;
};

constexpr std::array<Form, 6> forms{{{"call", FleetTopic::Kind::Call, false},
                                     {"answer", FleetTopic::Kind::Answer, true},
                                     {"event", FleetTopic::Kind::Event, false},
                                     {"online", FleetTopic::Kind::Online, false},
                                     {"info", FleetTopic::Kind::Info, false},
                                     {"state", FleetTopic::Kind::State, true}}};
} // namespace

bool isFleetName(const QString &name)
{
    return !name.isEmpty() && name.size() <= maxNameLength &&
           std::all_of(name.begin(), name.end(), isNameCharacter);
}

bool isDeviceName(const QString &name)
{
    return isFleetName(name) && name != QLatin1String("group");
}

QString FleetTopics::call(const QString &device)
{
    return ofDevice(device, "call");
}

QString FleetTopics::groupCall(const QString &group)
{
    return ofDevice(QStringLiteral("group/") + group, "call");
}

QString FleetTopics::groupEnd(const QString &group)
{
    return ofDevice(QStringLiteral("group/") + group, "end");
}

QString FleetTopics::answer(const QString &device, const QString &controller)
{
    return ofDevice(device, "answer/") + controller;
}

QString FleetTopics::event(const QString &device)
{
    return ofDevice(device, "event");
}

QString FleetTopics::online(const QString &device)
{
    return ofDevice(device, "online");
}

QString FleetTopics::info(const QString &device)
{
    return ofDevice(device, "info");
}

QString FleetTopics::state(const QString &device, const QString &what)
{
    return ofDevice(device, "state/") + what;
}

std::optional<FleetTopic> FleetTopic::parse(const QString &topic)
{
    if (!topic.startsWith(QLatin1String(root))) {
        return {};
    }
    const QStringList parts =
        topic.mid(int(std::char_traits<char>::length(root))).split(QLatin1Char('/'));
    if (!std::all_of(parts.begin(), parts.end(), isFleetName)) {
        return {};
    }
    if (parts[0] == QLatin1String("group")) {
        if (parts.size() != 3) {
            return {};
        }
        if (parts[2] == QLatin1String("call")) {
            return FleetTopic{Kind::GroupCall, parts[1], {}};
        }
        return parts[2] == QLatin1String("end")
                   ? std::optional(FleetTopic{Kind::GroupEnd, parts[1], {}})
                   : std::nullopt;
    }
    for (const Form &form : forms) {
        if (parts.size() == (form.hasDetail ? 3 : 2) && parts[1] == QLatin1String(form.word)) {
            return FleetTopic{form.kind, parts[0], parts.value(2)};
        }
    }
    return {};
}
