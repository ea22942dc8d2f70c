// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/message/MessageRows.h"

#include "display/text/ShownText.h"
#include <core/records/attention.h>
#include <core/records/rows.h>

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>

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
    const int max = message.isGroup ? Message::maxListed : Message::maxActions;
    if (!label.isEmpty() && message.actions.size() < max) {
        message.actions.append({row.path(), label, row.icon().left(maxSourceLength)});
    }
}

/// A count, and the program that it is of, if there is one.
QString translatedCount(const QRegularExpressionMatch &match, const char *count,
                        const char *countOfProgram)
{
    const QString number = QLocale().toString(match.captured(1).toInt());
    const QString program = match.captured(2);
    return program.isEmpty() ? QCoreApplication::translate("Messages", count).arg(number)
                             : QCoreApplication::translate("Messages", countOfProgram)
                                   .arg(number, shownLine(program));
}

/// The host knows no language: these are its own texts.
QString translatedTitle(const QString &title, bool isGroup)
{
    if (title == QLatin1String("Message")) {
        return QCoreApplication::translate("Messages", "Message");
    }
    if (title == QLatin1String("While you were not to be disturbed")) {
        return QCoreApplication::translate("Messages", "While you were not to be disturbed");
    }
    static const QRegularExpression messages(QStringLiteral("^(\\d+) messages(?: of (.*))?$"));
    const auto match = isGroup ? messages.match(title) : QRegularExpressionMatch();
    if (!match.hasMatch()) {
        return shownLine(title);
    }
    return translatedCount(match, QT_TRANSLATE_NOOP("Messages", "%1 messages"),
                           QT_TRANSLATE_NOOP("Messages", "%1 messages of %2"));
}

/// The title of a summary of what came too fast.
QString translatedFlood(const QString &title)
{
    static const QRegularExpression more(QStringLiteral("^(\\d+) more(?: of (.*))?$"));
    const auto match = more.match(title);
    if (!match.hasMatch()) {
        return title;
    }
    return translatedCount(match, QT_TRANSLATE_NOOP("Messages", "%1 more"),
                           QT_TRANSLATE_NOOP("Messages", "%1 more of %2"));
}

QString translatedText(const QString &text)
{
    static const QRegularExpression older(QStringLiteral("^and (\\d+) older ones$"));
    const auto match = older.match(text);
    return match.hasMatch() ? QCoreApplication::translate("Messages", "and %1 older ones")
                                  .arg(QLocale().toString(match.captured(1).toInt()))
                            : text;
}

/// Whether the module for attention made it of several messages.
bool isGroup(const CMPath &path)
{
    return path.toString().startsWith(TavoAttentionMessagesPath().toString() +
                                      QStringLiteral("/group-"));
}
} // namespace

Message messageFromRows(const CMPath &path, const QString &title, const QVariantList &rows)
{
    Message message;
    message.isGroup = isGroup(path);
    message.title = translatedTitle(title, message.isGroup);
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
    if (message.isGroup) {
        message.text = translatedText(message.text);
    } else if (message.text == QLatin1String("They came too fast to be shown.")) {
        message.title = translatedFlood(message.title);
        message.text = QCoreApplication::translate("Messages", "They came too fast to be shown.");
    }
    return message;
}
