// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "mqtt/MqttAttempt.h"

#include "mqtt/MqttConnection.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <optional>

namespace {
constexpr std::chrono::milliseconds stopTimeout(2000);
constexpr int receiveMaximum = 100;

/// A list of properties, freed at the end.
class Properties
{
public:
    Properties() = default;
    ~Properties() { mosquitto_property_free_all(&m_list); }
    Properties(const Properties &) = delete;
    Properties &operator=(const Properties &) = delete;

    void add16(int identifier, int value)
    {
        mosquitto_property_add_int16(&m_list, identifier, static_cast<uint16_t>(value));
    }
    void add32(int identifier, int value)
    {
        mosquitto_property_add_int32(&m_list, identifier, static_cast<uint32_t>(value));
    }
    mosquitto_property *list() const { return m_list; }

private:
    mosquitto_property *m_list = nullptr;
};

QByteArray firstLine(QFile &file)
{
    QByteArray line = file.readLine();
    while (line.endsWith('\n') || line.endsWith('\r')) {
        line.chop(1);
    }
    return line;
}

const char *orNull(const QByteArray &text)
{
    return text.isEmpty() ? nullptr : text.constData();
}

std::optional<Failure> unreadable(QFile &file)
{
    return file.open(QIODevice::ReadOnly)
               ? std::nullopt
               : std::optional(
                     Failure{QStringLiteral("%1: %2").arg(file.fileName(), file.errorString())});
}
} // namespace

/// What the thread does. A new handle each time: it has nothing left of the last one, and reads the files again.
class MqttAttempt::Connecting
{
public:
    Connecting(const MqttSettings &settings, const MqttMessage &will)
        : m_settings(settings)
        , m_will(will)
    {
    }

    Result<Handle> run()
    {
        const QByteArray id = m_settings.clientId.toUtf8();
        const Handle handle(mosquitto_new(orNull(id), m_settings.sessionSeconds == 0, this),
                            mosquitto_destroy);
        if (!handle) {
            return Failure{QStringLiteral("the client id can't be used")};
        }
        mosquitto_log_callback_set(
            handle.get(), [](mosquitto *, void *self, int level, const char *text) {
                if (level == MOSQ_LOG_ERR || level == MOSQ_LOG_WARNING) {
                    static_cast<Connecting *>(self)->m_logText = errorText(text);
                }
            });
        mosquitto_int_option(handle.get(), MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
        mosquitto_int_option(handle.get(), MOSQ_OPT_TCP_NODELAY, 1);
        // Packets wait until they are written on purpose: an acknowledgement must not be early.
        mosquitto_threaded_set(handle.get(), true);
        if (!m_will.topic.isEmpty()) {
            mosquitto_will_set_v5(handle.get(), m_will.topic.toUtf8().constData(),
                                  m_will.payload.size(), m_will.payload.constData(), m_will.qos,
                                  m_will.isRetained, nullptr);
        }
        for (const auto step :
             {&Connecting::setPassword, &Connecting::setEncryption, &Connecting::connect}) {
            if (const auto failure = (this->*step)(handle.get())) {
                return *failure;
            }
        }
        mosquitto_log_callback_set(handle.get(), nullptr);
        return handle;
    }

private:
    std::optional<Failure> setPassword(mosquitto *handle)
    {
        if (m_settings.user.isEmpty()) {
            return {};
        }
        QByteArray password;
        if (!m_settings.passwordFile.isEmpty()) {
            QFile file(m_settings.passwordFile);
            if (const auto failure = unreadable(file)) {
                return failure;
            }
            password = firstLine(file);
        }
        mosquitto_username_pw_set(handle, m_settings.user.toUtf8().constData(), orNull(password));
        return {};
    }

    std::optional<Failure> setEncryption(mosquitto *handle)
    {
        if (!m_settings.isEncrypted) {
            return {};
        }
        const QByteArray ca = QFile::encodeName(m_settings.caFile);
        const QByteArray certificate = QFile::encodeName(m_settings.certificateFile);
        const QByteArray key = QFile::encodeName(m_settings.keyFile);
        for (const QByteArray &name : {ca, certificate, key}) {
            QFile file(QFile::decodeName(name));
            if (const auto failure = name.isEmpty() ? std::nullopt : unreadable(file)) {
                return failure;
            }
        }
        int code = MOSQ_ERR_SUCCESS;
        if (ca.isEmpty()) {
            code = mosquitto_int_option(handle, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
        }
        if (code == MOSQ_ERR_SUCCESS && !(ca + certificate).isEmpty()) {
            // Without a CA of its own, libmosquitto wants a folder.
            code = mosquitto_tls_set(handle, orNull(ca), ca.isEmpty() ? "/etc/ssl/certs" : nullptr,
                                     orNull(certificate), orNull(key), nullptr);
        }
        if (code != MOSQ_ERR_SUCCESS) {
            return Failure{QStringLiteral("TLS can't be used: %1")
                               .arg(QLatin1String(mosquitto_strerror(code)))};
        }
        return {};
    }

    /// Resolves the name and connects.
    std::optional<Failure> connect(mosquitto *handle)
    {
        Properties properties;
        properties.add16(MQTT_PROP_RECEIVE_MAXIMUM, receiveMaximum);
        properties.add32(MQTT_PROP_MAXIMUM_PACKET_SIZE, MqttConnection::maxPacketBytes);
        if (m_settings.sessionSeconds > 0) {
            properties.add32(MQTT_PROP_SESSION_EXPIRY_INTERVAL, m_settings.sessionSeconds);
        }
        const int code =
            mosquitto_connect_bind_v5(handle, m_settings.host.toUtf8().constData(), m_settings.port,
                                      m_settings.pingSeconds(), nullptr, properties.list());
        const int error = errno;
        switch (code) {
        case MOSQ_ERR_SUCCESS:
            return {};
        case MOSQ_ERR_EAI:
            return Failure{QStringLiteral("the name %1 can't be resolved").arg(m_settings.host)};
        case MOSQ_ERR_ERRNO:
            return Failure{QString::fromLocal8Bit(std::strerror(error))};
        default:
            return Failure{m_logText.isEmpty() ? QLatin1String(mosquitto_strerror(code))
                                               : m_logText};
        }
    }

    const MqttSettings m_settings;
    const MqttMessage m_will; ///< none if it has no topic
    QString m_logText;        ///< what libmosquitto has said last about an error
};

QString MqttAttempt::errorText(const char *log)
{
    const QString line = QString::fromUtf8(log);
    return line.startsWith(QLatin1String("OpenSSL Error"))
               ? QStringLiteral("TLS: ") + line.section(QLatin1Char(':'), -1)
               : line;
}

MqttAttempt::MqttAttempt(const MqttSettings &settings, const MqttMessage &will, QObject *context,
                         const Finish &finish)
{
    m_shared->context = context;
    m_thread = std::thread([settings, will, finish, shared = m_shared] {
        sigset_t signals;
        sigfillset(&signals);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        const auto result = Connecting(settings, will).run();
        const auto tell = [finish, result, shared] {
            if (shared->context != nullptr) {
                finish(result);
            }
        };
        const std::lock_guard lock(shared->mutex);
        if (shared->context != nullptr) {
            QMetaObject::invokeMethod(shared->context, tell, Qt::QueuedConnection);
        }
        shared->isFinished = true;
        shared->changed.notify_all();
    });
}

MqttAttempt::~MqttAttempt()
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->context = nullptr;
    const bool isFinished =
        m_shared->changed.wait_for(lock, stopTimeout, [this] { return m_shared->isFinished; });
    lock.unlock();
    if (isFinished) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
}
