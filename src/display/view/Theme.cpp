// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Theme.h"

#include <QQmlComponent>

QUrl Theme::builtIn()
{
    return QUrl(QStringLiteral("qrc:/tavo/display/Card.qml"));
}

Result<std::unique_ptr<QQuickItem>> Theme::load(QQmlEngine &engine, const QUrl &file)
{
    QQmlComponent component(&engine, file);
    std::unique_ptr<QObject> object(component.create());
    if (!object) {
        return Failure{component.errorString().trimmed().section(QLatin1Char('\n'), 0, 0)};
    }
    auto *item = qobject_cast<QQuickItem *>(object.get());
    if (item == nullptr) {
        return Failure{QStringLiteral("%1: the root must be an item").arg(file.toLocalFile())};
    }
    if (item->implicitHeight() < 1) {
        return Failure{
            QStringLiteral("%1: the root must have an implicitHeight").arg(file.toLocalFile())};
    }
    object.release();
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    return std::unique_ptr<QQuickItem>(item);
}
