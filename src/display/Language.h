// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QTranslator>

/// The language of the display's own texts and of those of the host that are translated when they are
/// shown, and with it the direction of the layout.
class Language
{
public:
    /// Such as "de_AT"; empty for the system's. Can be called again.
    void set(const QString &name);

private:
    QTranslator m_translator;
};
