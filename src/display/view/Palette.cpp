// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Palette.h"

#include <core/records/enumerations.h>

#include <algorithm>
#include <array>

namespace {
using Priority = TavoNotificationItemPriority;

constexpr int priorityCount = 4;

struct Colors
{
    QRgb background, text, faintText, border, button, pressedButton, focus, backdrop;
};

struct NamedPalette
{
    const char *name;
    Colors usual;
    Colors urgent;
    std::array<QRgb, priorityCount> accents;
};

constexpr std::array<NamedPalette, 3> palettes{
    {{"dark",
      {0xff1c2127, 0xfff5f7fa, 0xffb9c2cd, 0xff7d8a99, 0xff2b333c, 0xff45515e, 0xff8ec7ff,
       0xff0c0f12},
      {0xff4a0f14, 0xffffffff, 0xfff3c9cb, 0xffd48a8e, 0xff661a20, 0xff8a2a31, 0xffffe08a,
       0xff240507},
      {0xff8896a5, 0xff4aa8ff, 0xffffb02e, 0xffff6b6e}},
     {"light",
      {0xffffffff, 0xff14181d, 0xff4b5662, 0xff76818d, 0xfff0f3f6, 0xffd3dae1, 0xff0b57b0,
       0xffe3e8ed},
      {0xfffff1f0, 0xff2b0507, 0xff7a2a2e, 0xffad5055, 0xffffdcda, 0xfff7b9b6, 0xff0b57b0,
       0xfff3c6c4},
      {0xff6b7785, 0xff0f6fd6, 0xffa86200, 0xffc81e24}},
     {"high-contrast",
      {0xff000000, 0xffffffff, 0xffffffff, 0xffffffff, 0xff000000, 0xff3a3a00, 0xffffff00,
       0xff000000},
      {0xff000000, 0xffffff00, 0xffffff00, 0xffffff00, 0xff000000, 0xff3a3a00, 0xff00ffff,
       0xff000000},
      {0xffffffff, 0xff00ffff, 0xffffff00, 0xffff8f8f}}}};
} // namespace

QStringList Palette::names()
{
    QStringList names;
    for (const NamedPalette &palette : palettes) {
        names.append(QLatin1String(palette.name));
    }
    return names;
}

Palette Palette::find(const QString &name, int priority)
{
    const auto *found = std::find_if(palettes.begin(), palettes.end(), [&](const auto &palette) {
        return name == QLatin1String(palette.name);
    });
    const NamedPalette &palette = found == palettes.end() ? palettes.front() : *found;
    const int rank = qBound(int(Priority::Low), priority, int(Priority::Urgent));
    const Colors &colors = rank == Priority::Urgent ? palette.urgent : palette.usual;
    return {
        colors.background, colors.text,   colors.faintText,     palette.accents[std::size_t(rank)],
        colors.border,     colors.button, colors.pressedButton, colors.focus,
        colors.backdrop};
}
