// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QQmlEngine>
#include <QQuickItem>
#include <QUrl>

#include <memory>

/// Makes the item that shows a message, from the QML file of a theme.
class Theme
{
public:
    /// The one that is compiled in.
    static QUrl builtIn();

    /// Fails if the file is wrong, or if its root is not an item that has a height of its own.
    static Result<std::unique_ptr<QQuickItem>> load(QQmlEngine &engine, const QUrl &file);
};
