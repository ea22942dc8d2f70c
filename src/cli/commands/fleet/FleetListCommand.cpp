// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetListCommand.h"

#include "base/Printable.h"

namespace {
/// What a person would notice of the device.
QString stateText(const FleetDevice &device)
{
    const auto field = [&device](const char *state, const char *key) {
        return device.states.value(QLatin1String(state)).toHash().value(QLatin1String(key));
    };
    QStringList texts;
    if (field("display", "shown").toBool()) {
        constexpr int maxSize = 200; // a device may say anything
        const QString title = field("display", "title").toString();
        const QString text = field("display", "text").toString();
        const QString shown = text.isEmpty() ? title : title + QStringLiteral(": ") + text;
        texts.append(QStringLiteral("shows ") + printable(shortened(shown, maxSize)));
    }
    if (field("sound", "sounding").toBool()) {
        texts.append(QStringLiteral("sounding"));
    }
    if (field("quiet", "quiet").toBool()) {
        texts.append(QStringLiteral("quiet"));
    }
    return texts.join(QStringLiteral(", "));
}
} // namespace

QStringList FleetListCommand::filters() const
{
    const QString any = QStringLiteral("+");
    return {FleetTopics::state(any, any)};
}

void FleetListCommand::onDevicesKnown()
{
    failIfDeaf();
    if (!isFinished()) {
        printDevices();
        finish(ExitCode::Ok);
    }
}

void FleetListCommand::printDevices()
{
    QVariantList rows;
    const auto &all = devices().all();
    for (auto device = all.begin(); device != all.end(); ++device) {
        if (!isChosen(device.key())) {
            continue;
        }
        QVariantHash states;
        for (auto state = device->states.begin(); state != device->states.end(); ++state) {
            states.insert(state.key(), *state);
        }
        rows.append(QVariantHash{{QStringLiteral("device"), device.key()},
                                 {QStringLiteral("online"), device->isOnline},
                                 {QStringLiteral("info"), device->info},
                                 {QStringLiteral("state"), states}});
        if (!options().json) {
            terminal().print(lineOf(device.key(), *device));
        }
    }
    if (options().json) {
        print(QVariantHash{{QStringLiteral("devices"), rows}}, {});
    } else if (rows.isEmpty()) {
        terminal().printNote(QStringLiteral("No devices."));
    }
}

QString FleetListCommand::lineOf(const QString &name, const FleetDevice &device)
{
    const QString presence = device.isOnline ? QStringLiteral("online") : QStringLiteral("away");
    const QString groups = printable(device.groups().join(QLatin1Char(',')));
    // What it did last is over.
    const QString state = device.isOnline ? stateText(device) : QString();
    if (!terminal().isTerminal()) {
        return QStringList{name, presence, groups, state}.join(QLatin1Char('\t'));
    }
    constexpr int nameWidth = 16;
    constexpr int presenceWidth = 6;
    const auto style = device.isOnline ? Terminal::Style::Good : Terminal::Style::Bad;
    return QStringList{terminal().styled(name.leftJustified(nameWidth), Terminal::Style::Bold),
                       terminal().styled(presence.leftJustified(presenceWidth), style),
                       terminal().styled(groups, Terminal::Style::Faint), state}
        .join(QStringLiteral("  "));
}

void FleetListCommand::onTimeUp()
{
    FleetCommand::onTimeUp();
    if (!isFinished()) {
        failIfDeaf();
    }
    if (!isFinished()) {
        printDevices();
        fail(ExitCode::TimedOut,
             QStringLiteral("the broker did not tell everything in time: devices may be missing"));
    }
}
