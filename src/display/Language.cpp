// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/Language.h"

#include <QGuiApplication>
#include <QLocale>

void Language::set(const QString &name)
{
    const QLocale locale = name.isEmpty() ? QLocale::system() : QLocale(name);
    QLocale::setDefault(locale);
    QCoreApplication::removeTranslator(&m_translator);
    if (m_translator.load(locale, QStringLiteral("tavo-display"), QStringLiteral("_"),
                          QStringLiteral(":/tavo/display"))) {
        QCoreApplication::installTranslator(&m_translator);
    }
    QGuiApplication::setLayoutDirection(locale.textDirection());
}
