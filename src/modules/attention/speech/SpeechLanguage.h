// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

/// Which of the languages a text is in, such as "ru"; empty if none of them. The language that its sender
/// names counts first: "de-AT" is "de" if there is no "de-at". Otherwise it is one that is written in the
/// script of most of the text. Languages that are written in Latin letters are told only by their senders.
QString speechLanguage(const QString &named, const QString &text, const QStringList &languages);
