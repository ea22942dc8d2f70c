// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HostConfiguration.h"

#include "host/ConfigurationReader.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cctype>

namespace {
/// Where the parser stumbled. For most errors it has gone on past the character that it complains
/// about, and past the blanks behind that.
int errorOffset(const QByteArray &json, const QJsonParseError &error)
{
    int offset = qBound(0, error.offset, json.size());
    if (error.error == QJsonParseError::IllegalNumber ||
        error.error == QJsonParseError::GarbageAtEnd ||
        error.error == QJsonParseError::IllegalUTF8String) {
        return offset;
    }
    do {
        offset = qMax(0, offset - 1);
    } while (offset > 0 && std::isspace(static_cast<unsigned char>(json.at(offset))) != 0);
    return offset;
}

/// "LINE:COLUMN", both counted from one, columns in characters.
QString positionText(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    const int lineStart = before.lastIndexOf('\n') + 1;
    const int column = QString::fromUtf8(before.mid(lineStart)).size() + 1;
    return QStringLiteral("%1:%2").arg(before.count('\n') + 1).arg(column);
}
} // namespace

QString ConfigurationError::text() const
{
    if (key.isEmpty()) {
        return file + QLatin1String(": ") + reason;
    }
    const QLatin1String separator(isSyntaxError ? ":" : ": ");
    return file + separator + key + QLatin1String(": ") + reason;
}

HostConfiguration HostConfiguration::builtIn()
{
    HostConfiguration configuration;
    configuration.source = QStringLiteral("built-in configuration");
    for (const char *name : {"powermanager", "player", "notifications", "dbus"}) {
        configuration.modules.append({QLatin1String(name), QLatin1String(name), {}});
    }
    return configuration;
}

HostConfiguration::Result HostConfiguration::fromFile(const QString &file)
{
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly)) {
        return ConfigurationError{file, {}, device.errorString()};
    }
    const QByteArray json = device.readAll();
    if (device.error() != QFileDevice::NoError) {
        return ConfigurationError{file, {}, device.errorString()};
    }
    return fromJson(json, file);
}

HostConfiguration::Result HostConfiguration::fromJson(const QByteArray &json, const QString &file)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        return ConfigurationError{file, positionText(json, errorOffset(json, error)),
                                  error.errorString(), true};
    }
    if (!document.isObject()) {
        return ConfigurationError{file, {}, QStringLiteral("must be a JSON object")};
    }
    return ConfigurationReader(file).read(document.object());
}
