// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/SendableText.h"

#include <QVector>

QString sendableText(const QString &text)
{
    QVector<uint> codes = text.toUcs4();
    for (uint &code : codes) {
        if (code == 0 || QChar::isSurrogate(code) || QChar::isNonCharacter(code)) {
            code = QChar::ReplacementCharacter;
        }
    }
    return QString::fromUcs4(codes.constData(), codes.size());
}
