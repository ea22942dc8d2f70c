// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/Treatment.h"

#include <QStringList>

namespace {
QString textOf(TavoNotificationItemPriority::Enum priority)
{
    return TavoNotificationItemPriority::toString(priority);
}

QString textOf(int number)
{
    return QString::number(number);
}

QString textOf(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString textOf(bool isSet)
{
    return isSet ? QStringLiteral("yes") : QStringLiteral("no");
}

/// Calls the function with the name of each member, and the member of both treatments.
template <typename First, typename Second, typename Function>
void forEach(First &first, Second &second, Function function)
{
    function("priority", first.priority, second.priority);
    function("timeout", first.timeout, second.timeout);
    function("sound", first.sound, second.sound);
    function("attenuation", first.attenuation, second.attenuation);
    function("group", first.group, second.group);
    function("groupFrom", first.groupFrom, second.groupFrom);
    function("chime", first.chime, second.chime);
    function("mute", first.mute, second.mute);
    function("hide", first.hide, second.hide);
    function("drop", first.drop, second.drop);
    function("speak", first.speak, second.speak);
    function("pass", first.pass, second.pass);
    function("private", first.isPrivate, second.isPrivate);
    function("mustSee", first.mustSee, second.mustSee);
}
} // namespace

void Treatment::add(const Treatment &other)
{
    forEach(*this, other, [](const char *, auto &mine, const auto &others) {
        if (others) {
            mine = others;
        }
    });
}

QString Treatment::toString() const
{
    QStringList parts;
    forEach(*this, *this, [&parts](const char *name, const auto &value, const auto &) {
        if (value) {
            parts.append(QLatin1String(name) + QLatin1Char(' ') + textOf(*value));
        }
    });
    return parts.join(QLatin1String(", "));
}
