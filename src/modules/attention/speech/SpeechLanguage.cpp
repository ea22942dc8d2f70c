// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SpeechLanguage.h"

#include <QLocale>
#include <QMap>

#include <algorithm>

namespace {
/// The script of most letters; Common if there are none.
QChar::Script scriptOf(const QString &text)
{
    QMap<QChar::Script, int> counts;
    for (const uint letter : text.toUcs4()) {
        const QChar::Script script = QChar::script(letter);
        if (QChar::isLetter(letter) && script != QChar::Script_Common) {
            ++counts[script];
        }
    }
    const auto most = std::max_element(counts.cbegin(), counts.cend());
    return most == counts.cend() ? QChar::Script_Common : most.key();
}

bool isJapanese(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar character) {
        return character.script() == QChar::Script_Hiragana ||
               character.script() == QChar::Script_Katakana;
    });
}

/// Most languages write their own names in their scripts.
bool isWrittenIn(QChar::Script script, const QString &language)
{
    return scriptOf(QLocale(language).nativeLanguageName()) == script;
}
} // namespace

QString speechLanguage(const QString &named, const QString &text, const QStringList &languages)
{
    const QString wanted = QString(named).replace(QLatin1Char('_'), QLatin1Char('-'));
    for (const QString &tag : {wanted, wanted.section(QLatin1Char('-'), 0, 0)}) {
        if (languages.contains(tag, Qt::CaseInsensitive)) {
            return tag.toLower();
        }
    }
    const QString japanese = QStringLiteral("ja");
    if (isJapanese(text)) {
        return languages.contains(japanese) ? japanese : QString();
    }
    const QChar::Script script = scriptOf(text);
    if (!named.isEmpty() || script == QChar::Script_Latin || script == QChar::Script_Common) {
        return {};
    }
    const auto found =
        std::find_if(languages.begin(), languages.end(), [&](const QString &language) {
            return language != japanese && isWrittenIn(script, language);
        });
    return found == languages.end() ? QString() : *found;
}
