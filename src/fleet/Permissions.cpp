// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/Permissions.h"

#include "base/PriorityName.h"
#include "base/SoundLocation.h"
#include "fleet/protocol/FleetTopics.h"
#include <core/base/configuration.h>
#include <core/records/cmpath.h>

#include <QFileInfo>

namespace {
constexpr auto defaultSoundFolder = "/usr/share/sounds/freedesktop/stereo";

QVector<FleetCall::Kind> readCalls(TavoConfiguration &section)
{
    const auto key = QStringLiteral("calls");
    const QStringList names = section.stringList(
        key, {QStringLiteral("show"), QStringLiteral("sound"), QStringLiteral("notify"),
              QStringLiteral("say"), QStringLiteral("cancel")});
    QVector<FleetCall::Kind> kinds{FleetCall::Kind::Ping};
    for (const QString &name : names) {
        const auto kind = FleetCall::kindFromName(name);
        if (!kind) {
            section.fail(key, QStringLiteral("%1 is not a call").arg(name));
        }
        kinds.append(*kind);
    }
    return kinds;
}

int readPriority(TavoConfiguration &section)
{
    const auto key = QStringLiteral("maxPriority");
    const auto priority = priorityNamed(section.string(key, QStringLiteral("Urgent")));
    if (!priority) {
        section.fail(key, QStringLiteral("must be Low, Normal, High or Urgent"));
    }
    return *priority;
}
} // namespace

Permissions Permissions::read(TavoConfiguration section)
{
    Permissions permissions;
    permissions.m_calls = readCalls(section);
    permissions.m_paths = section.stringList(QStringLiteral("paths"), {});
    for (QString &path : permissions.m_paths) {
        if (!path.startsWith(QLatin1Char('/'))) {
            section.fail(QStringLiteral("paths"),
                         QStringLiteral("must be paths that begin with /"));
        }
        path = CMPath(path).toString();
    }
    TavoConfiguration sounds = section.section(QStringLiteral("sounds"));
    permissions.m_soundFolder =
        sounds.string(QStringLiteral("folder"), QLatin1String(defaultSoundFolder));
    permissions.m_soundSchemes = sounds.stringList(QStringLiteral("schemes"), {});
    for (const QString &scheme : qAsConst(permissions.m_soundSchemes)) {
        if (scheme != QLatin1String("http") && scheme != QLatin1String("https")) {
            sounds.fail(QStringLiteral("schemes"), QStringLiteral("may have http and https"));
        }
    }
    sounds.finish();
    permissions.m_maxPriority = readPriority(section);
    section.finish();
    return permissions;
}

QStringList Permissions::calls() const
{
    QStringList names;
    for (const auto kind : m_calls) {
        names.append(FleetCall::kindName(kind));
    }
    return names;
}

std::optional<Failure> Permissions::refusal(const FleetCall &call) const
{
    if (!allows(call.kind)) {
        return Failure{QStringLiteral("this device does not allow the call %1")
                           .arg(FleetCall::kindName(call.kind))};
    }
    if (call.kind == FleetCall::Kind::Call && !isAllowedPath(call.path)) {
        return Failure{QStringLiteral("this device does not allow calls of this path")};
    }
    if (!call.sound.isEmpty()) {
        const auto location = sound(call.sound);
        if (const auto *failure = std::get_if<Failure>(&location)) {
            return *failure;
        }
    }
    return {};
}

/// The path itself is allowed, or one above it.
bool Permissions::isAllowedPath(const QString &path) const
{
    const CMPath called(path);
    return std::any_of(m_paths.begin(), m_paths.end(), [&called](const QString &allowed) {
        return called == CMPath(allowed) || called.isBelow(CMPath(allowed));
    });
}

Result<QString> Permissions::sound(const QString &name) const
{
    if (isSoundUri(name)) {
        const QString scheme = name.section(QLatin1Char(':'), 0, 0).toLower();
        if (!m_soundSchemes.contains(scheme)) {
            return Failure{
                QStringLiteral("this device does not allow sounds of %1:").arg(scheme.left(16))};
        }
        return name;
    }
    if (!isFleetName(name) || name.startsWith(QLatin1Char('.'))) {
        return Failure{QStringLiteral("the name of a sound must be 1 to 64 letters, digits, dots, "
                                      "underscores and hyphens")};
    }
    for (const char *suffix : {"", ".oga", ".ogg", ".wav", ".flac"}) {
        const QString file = m_soundFolder + QLatin1Char('/') + name + QLatin1String(suffix);
        if (QFileInfo(file).isFile()) {
            return file;
        }
    }
    return Failure{QStringLiteral("there is no sound %1 on this device").arg(name)};
}
