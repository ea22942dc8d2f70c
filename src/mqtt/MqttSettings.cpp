// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "mqtt/MqttSettings.h"

#include <core/base/configuration.h>

#include <QUrl>

namespace {
constexpr int plainPort = 1883;
constexpr int encryptedPort = 8883;
constexpr int minKeepAlive = 10; // the half of it is what libmosquitto allows
constexpr int maxKeepAlive = 3600;
constexpr int maxReconnect = 3600000;

/// A credential by its name, or another file by its path.
QString fileName(const QString &name)
{
    const QString folder = qEnvironmentVariable("CREDENTIALS_DIRECTORY");
    const bool isCredential = !name.isEmpty() && !name.contains(QLatin1Char('/'));
    return isCredential && !folder.isEmpty() ? folder + QLatin1Char('/') + name : name;
}

void readUrl(TavoConfiguration &section, MqttSettings &settings)
{
    const auto key = QStringLiteral("url");
    const QUrl url(section.string(key, {}), QUrl::StrictMode);
    const bool isPlain = url.scheme() == QLatin1String("mqtt");
    const bool isGood = url.isValid() && !url.host().isEmpty() && url.userInfo().isEmpty() &&
                        (url.path().isEmpty() || url.path() == QLatin1String("/")) &&
                        !url.hasQuery() && !url.hasFragment() && url.port() != 0 &&
                        (isPlain || url.scheme() == QLatin1String("mqtts"));
    if (!isGood) {
        section.fail(key, QStringLiteral("must be mqtts://HOST[:PORT], or mqtt://HOST[:PORT] for a "
                                         "connection without encryption"));
    }
    settings.host = url.host();
    settings.isEncrypted = !isPlain;
    settings.port = url.port(isPlain ? plainPort : encryptedPort);
}

void readIdentity(TavoConfiguration &section, MqttSettings &settings)
{
    const auto file = [&section](const char *key) {
        return fileName(section.string(QLatin1String(key), {}));
    };
    settings.caFile = file("ca");
    settings.certificateFile = file("certificate");
    settings.keyFile = file("key");
    settings.user = section.string(QStringLiteral("user"), {});
    settings.passwordFile = file("passwordFile");
    if (settings.certificateFile.isEmpty() != settings.keyFile.isEmpty()) {
        section.fail(QStringLiteral("certificate"),
                     QStringLiteral("needs a key, and a key needs it"));
    }
    if (settings.user.isEmpty() && !settings.passwordFile.isEmpty()) {
        section.fail(QStringLiteral("passwordFile"), QStringLiteral("needs a user"));
    }
    if (!settings.isEncrypted && !(settings.caFile + settings.certificateFile).isEmpty()) {
        section.fail(QStringLiteral("url"),
                     QStringLiteral("must be mqtts:// because certificates are configured"));
    }
}
} // namespace

MqttSettings MqttSettings::read(TavoConfiguration section)
{
    MqttSettings settings;
    readUrl(section, settings);
    readIdentity(section, settings);
    settings.keepAliveSeconds = section.integer(
        QStringLiteral("keepAlive"), settings.keepAliveSeconds, minKeepAlive, maxKeepAlive);
    TavoConfiguration reconnect = section.section(QStringLiteral("reconnect"));
    settings.minReconnectMs =
        reconnect.integer(QStringLiteral("min"), settings.minReconnectMs, 1, maxReconnect);
    settings.maxReconnectMs = reconnect.integer(
        QStringLiteral("max"), qMax(settings.minReconnectMs, settings.maxReconnectMs),
        settings.minReconnectMs, maxReconnect);
    reconnect.finish();
    section.finish();
    return settings;
}

MqttSettings MqttSettings::fromUrl(const QString &url)
{
    return read(TavoConfiguration({{QStringLiteral("url"), url}}));
}
