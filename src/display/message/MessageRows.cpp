// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/message/MessageRows.h"

#include "display/text/ShownText.h"
#include <core/records/rows.h>

#include <QCoreApplication>

namespace {
constexpr int maxImageSide = 256;
constexpr int maxSourceLength = 4096;
constexpr int maxPercent = 100;

Picture pictureOf(const TavoRoles &row)
{
    const TavoImage image = row.image();
    const int width = image.width();
    const int height = image.height();
    const QByteArray pixels = image.pixels();
    constexpr int pixelBytes = 4;
    if (width > 0 && width <= maxImageSide && height > 0 && height <= maxImageSide &&
        pixels.size() == width * height * pixelBytes) {
        const auto *bytes = reinterpret_cast<const uchar *>(pixels.constData());
        return {QImage(bytes, width, height, width * pixelBytes, QImage::Format_RGBA8888).copy(),
                {}};
    }
    const QString source = image.source().isEmpty() ? row.icon() : image.source();
    return {{}, source.left(maxSourceLength)};
}

void readText(const TavoRoles &row, Message &message)
{
    message.text = shownText(row.title().toString());
    message.styled = styledText(row.markup());
    message.application = shownLine(row.application());
    message.picture = pictureOf(row);
    if (row.hasValue()) {
        message.value = qBound(0, row.value(), maxPercent);
    }
}

void readAction(const TavoRoles &row, Message &message)
{
    if (row.path().isEmpty()) {
        return;
    }
    const QString label = shownLine(row.title().toString());
    if (row.isDefault()) {
        message.defaultAction = row.path();
    }
    if (!label.isEmpty() && message.actions.size() < Message::maxActions) {
        message.actions.append({row.path(), label, row.icon().left(maxSourceLength)});
    }
}

/// The host gives a message without a title the title "Message", and knows no language.
QString translatedTitle(const QString &title)
{
    return title == QLatin1String("Message") ? QCoreApplication::translate("Messages", "Message")
                                             : shownLine(title);
}
} // namespace

Message messageFromRows(const QString &title, const QVariantList &rows)
{
    Message message;
    message.title = translatedTitle(title);
    bool hasText = false;
    for (const QVariant &value : rows) {
        const TavoRoles row(value.toHash());
        if (row.type() == TavoRolesType::Text && !hasText) {
            hasText = true;
            readText(row, message);
        } else if (row.type() == TavoRolesType::Action) {
            readAction(row, message);
        }
    }
    return message;
}
