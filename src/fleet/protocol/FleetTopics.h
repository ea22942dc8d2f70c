// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

/// Whether devices, groups, controllers and calls can have this name: 1 to 64 letters, digits, dots, underscores
/// and hyphens.
bool isFleetName(const QString &name);

/// Whether a device can have this name: not "group" either, which is part of topics.
bool isDeviceName(const QString &name);

/// The topics of the fleet. Names are not checked here; "+" as a name makes a filter.
namespace FleetTopics {
QString call(const QString &device);
QString groupCall(const QString &group);
/// How a call to the group has ended on one device, for calls that then end on all.
QString groupEnd(const QString &group);
QString answer(const QString &device, const QString &controller);
QString event(const QString &device);
/// Retained: "1", or "0" while the device is away.
QString online(const QString &device);
/// Retained: what the device is and can.
QString info(const QString &device);
/// Retained: what the device does: "display", "sound", "quiet", "volume".
QString state(const QString &device, const QString &what);
} // namespace FleetTopics

/// What a topic is about.
struct FleetTopic
{
    enum class Kind { Call, GroupCall, GroupEnd, Answer, Event, Online, Info, State };

    Kind kind;
    QString name;   ///< of the device, or of the group
    QString detail; ///< the controller of an answer, what a state is about

    /// Nothing for a topic that is not the fleet's, or has a name that nothing can have.
    static std::optional<FleetTopic> parse(const QString &topic);
};
