// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/DisplayConfiguration.h"

#include "display/view/Palette.h"
#include <core/base/configuration.h>

#include <QDir>
#include <QFileInfo>
#include <QKeySequence>
#include <QLocale>

#include <algorithm>
#include <array>
#include <utility>

namespace {
using Mode = DisplayConfiguration::Mode;
using Renderer = DisplayConfiguration::Renderer;
using Mark = DisplayConfiguration::Mark;

template <typename Value, std::size_t size>
using Names = std::array<std::pair<const char *, Value>, size>;

constexpr Names<Mode, 3> modes{
    {{"corner", Mode::Corner}, {"banner", Mode::Banner}, {"fullscreen", Mode::Fullscreen}}};

constexpr Names<Renderer, 2> renderers{
    {{"software", Renderer::Software}, {"opengl", Renderer::OpenGl}}};

constexpr Names<Mark, 3> marks{
    {{"do-not-disturb", Mark::DoNotDisturb}, {"missed", Mark::Missed}, {"never", Mark::Never}}};

struct Position
{
    bool isAtTop;
    bool isAtEnd;
};

constexpr Names<Position, 4> positions{{{"top-end", {true, true}},
                                        {"top-start", {true, false}},
                                        {"bottom-end", {false, true}},
                                        {"bottom-start", {false, false}}}};

template <typename Value, std::size_t size>
std::optional<Value> findName(const Names<Value, size> &names, const QString &name)
{
    for (const auto &[known, value] : names) {
        if (name == QLatin1String(known)) {
            return value;
        }
    }
    return {};
}

template <typename Value, std::size_t size>
QString list(const Names<Value, size> &names)
{
    QStringList texts;
    for (const auto &entry : names) {
        texts.append(QLatin1String(entry.first));
    }
    return texts.join(QStringLiteral(", "));
}

/// The value that the key names; the first one if the key is missing.
template <typename Value, std::size_t size>
Value readName(TavoConfiguration &configuration, const char *key, const Names<Value, size> &names)
{
    const QString name =
        configuration.string(QLatin1String(key), QLatin1String(names.front().first));
    const auto value = findName(names, name);
    if (!value) {
        configuration.fail(QLatin1String(key),
                           QStringLiteral("must be one of %1").arg(list(names)));
    }
    return *value;
}

/// The name of a palette, or the path of a file relative to that of the configuration.
QString readTheme(TavoConfiguration &configuration, const QString &file, const QString &dark)
{
    const auto key = QStringLiteral("theme");
    const QString theme = configuration.string(key, dark);
    if (Palette::names().contains(theme)) {
        return theme;
    }
    if (!theme.endsWith(QLatin1String(".qml"))) {
        configuration.fail(key, QStringLiteral("must be one of %1, or the path of a QML file")
                                    .arg(Palette::names().join(QStringLiteral(", "))));
    }
    return QDir::cleanPath(QFileInfo(file).absoluteDir().filePath(theme));
}

QString readLanguage(TavoConfiguration &configuration)
{
    const auto key = QStringLiteral("language");
    QString language = configuration.string(key, {});
    if (!language.isEmpty() && QLocale(language).language() == QLocale::C) {
        configuration.fail(key, QStringLiteral("must be a language such as \"de\" or \"de_AT\""));
    }
    return language;
}

/// A key that QKeySequence knows, with a modifier, so that it is not one that people type with.
QString readFocusKey(TavoConfiguration &configuration)
{
    const auto key = QStringLiteral("focusKey");
    QString text = configuration.string(key, {});
    const QKeySequence sequence(text);
    const bool isGood = sequence.count() == 1 && (sequence[0] & Qt::KeyboardModifierMask) != 0 &&
                        (sequence[0] & ~int(Qt::KeyboardModifierMask)) != Qt::Key_unknown;
    if (!text.isEmpty() && !isGood) {
        configuration.fail(key, QStringLiteral("must be a key with modifiers, such as \"Meta+N\""));
    }
    return text;
}

DisplayConfiguration read(TavoConfiguration source, const QString &file)
{
    constexpr int maxMargin = 1000;
    constexpr int minWidth = 200;
    constexpr int maxWidth = 10000;
    constexpr int minTextSize = 8;
    constexpr int maxTextSize = 200;

    DisplayConfiguration read;
    read.bus = source.string(QStringLiteral("bus"), read.bus);
    read.renderer = readName(source, "renderer", renderers);
    read.mode = readName(source, "mode", modes);
    const Position position = readName(source, "position", positions);
    read.isAtTop = position.isAtTop;
    read.isAtEnd = position.isAtEnd;
    read.screen = source.string(QStringLiteral("screen"), {});
    read.margin = source.integer(QStringLiteral("margin"), read.margin, 0, maxMargin);
    read.width = source.integer(QStringLiteral("width"), read.width, minWidth, maxWidth);
    read.textSize =
        source.integer(QStringLiteral("textSize"), read.textSize, minTextSize, maxTextSize);
    read.theme = readTheme(source, file, read.theme);
    read.iconTheme = source.string(QStringLiteral("iconTheme"), read.iconTheme);
    read.language = readLanguage(source);
    read.focusKey = readFocusKey(source);
    read.reducedMotion = source.boolean(QStringLiteral("reducedMotion"), read.reducedMotion);
    read.mark = readName(source, "mark", marks);
    source.finish();
    return read;
}
} // namespace

DisplayConfiguration DisplayConfiguration::fromFile(const QString &file)
{
    return read(TavoConfiguration::fromFile(file), file);
}

DisplayConfiguration DisplayConfiguration::fromJson(const QByteArray &json, const QString &file)
{
    return read(TavoConfiguration::fromJson(json, file), file);
}

std::optional<DisplayConfiguration::Mode> DisplayConfiguration::modeFromName(const QString &name)
{
    return findName(modes, name);
}

QString DisplayConfiguration::modeNames()
{
    return list(modes);
}

QString DisplayConfiguration::modeName() const
{
    const auto *found = std::find_if(modes.begin(), modes.end(),
                                     [this](const auto &entry) { return entry.second == mode; });
    return QLatin1String(found->first);
}
