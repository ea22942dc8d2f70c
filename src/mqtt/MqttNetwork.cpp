// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "mqtt/MqttNetwork.h"

#include "mqtt/MqttConnection.h"

#include <QFile>
#include <QPointer>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <mosquitto.h>
#include <mqtt_protocol.h>

namespace {
using std::chrono::milliseconds;

constexpr milliseconds stopTimeout(2000);
constexpr milliseconds acceptTimeout(10000); // until the broker accepts or refuses
constexpr int receiveMaximum = 100;
constexpr int maxReconnectShift = 16;
constexpr int oldProtocolRefused = 1; // how brokers for MQTT 3.1.1 refuse a newer version

/// A list of properties, freed at the end.
class Properties
{
public:
    Properties() = default;
    ~Properties() { mosquitto_property_free_all(&m_list); }
    Properties(const Properties &) = delete;
    Properties &operator=(const Properties &) = delete;

    void add(int identifier, uint value)
    {
        if (identifier == MQTT_PROP_RECEIVE_MAXIMUM) {
            mosquitto_property_add_int16(&m_list, identifier, static_cast<uint16_t>(value));
        } else {
            mosquitto_property_add_int32(&m_list, identifier, value);
        }
    }
    mosquitto_property *list() const { return m_list; }

private:
    mosquitto_property *m_list = nullptr;
};

void prepareLibrary()
{
    static const int s_result = mosquitto_lib_init();
    Q_UNUSED(s_result)
}

QString codeText(int code)
{
    return code == oldProtocolRefused || code == MQTT_RC_UNSUPPORTED_PROTOCOL_VERSION
               ? QStringLiteral("the broker does not speak MQTT 5")
               : QStringLiteral("the broker says: %1")
                     .arg(QLatin1String(mosquitto_reason_string(code)));
}

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
} // namespace

/// Forwards what libmosquitto calls.
struct MqttCallbacks
{
    static MqttNetwork &of(void *network) { return *static_cast<MqttNetwork *>(network); }

    static void set(mosquitto *handle)
    {
        mosquitto_connect_v5_callback_set(handle, [](mosquitto *handle, void *network, int code,
                                                     int flags, const mosquitto_property *) {
            of(network).on_connect(handle, code, (flags & 1) != 0);
        });
        mosquitto_disconnect_v5_callback_set(
            handle, [](mosquitto *, void *network, int code, const mosquitto_property *) {
                of(network).on_disconnect(code);
            });
        mosquitto_message_v5_callback_set(handle, [](mosquitto *, void *network,
                                                     const mosquitto_message *message,
                                                     const mosquitto_property *properties) {
            uint32_t expiry = 0;
            mosquitto_property_read_int32(properties, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL, &expiry,
                                          false);
            MqttMessage copy;
            copy.topic = QString::fromUtf8(message->topic);
            copy.payload =
                QByteArray(static_cast<const char *>(message->payload), message->payloadlen);
            copy.qos = message->qos;
            copy.isRetained = message->retain;
            copy.expirySeconds = static_cast<int>(std::min<uint32_t>(expiry, INT32_MAX));
            of(network).on_message(copy);
        });
        mosquitto_publish_v5_callback_set(
            handle, [](mosquitto *, void *network, int id, int code, const mosquitto_property *) {
                of(network).on_publish(id, code);
            });
        mosquitto_subscribe_v5_callback_set(handle, [](mosquitto *, void *network, int id,
                                                       int count, const int *codes,
                                                       const mosquitto_property *) {
            of(network).on_subscribe(id, count > 0 ? codes[0] : MQTT_RC_UNSPECIFIED);
        });
        mosquitto_log_callback_set(handle,
                                   [](mosquitto *, void *network, int level, const char *text) {
                                       if (level == MOSQ_LOG_ERR || level == MOSQ_LOG_WARNING) {
                                           of(network).m_logText = QString::fromUtf8(text);
                                       }
                                   });
    }
};

MqttNetwork::MqttNetwork(MqttConnection *owner, const MqttSettings &settings)
    : m_settings(settings)
    , m_owner(owner)
{
    prepareLibrary();
}

void MqttNetwork::start()
{
    m_thread = std::thread([self = shared_from_this()] { self->run(); });
}

void MqttNetwork::stop()
{
    std::unique_lock lock(m_mutex);
    m_owner = nullptr;
    m_isStopping = true;
    m_changed.notify_all();
    if (!m_thread.joinable()) {
        return;
    }
    if (const Handle handle = m_handle) {
        lock.unlock();
        mosquitto_disconnect_v5(handle.get(), MQTT_RC_NORMAL_DISCONNECTION, nullptr);
        lock.lock();
    }
    if (m_changed.wait_for(lock, stopTimeout, [this] { return m_isFinished; })) {
        lock.unlock();
        m_thread.join();
    } else {
        m_thread.detach();
    }
}

void MqttNetwork::subscribe(const QString &filter)
{
    const std::lock_guard lock(m_mutex);
    if (!m_filters.contains(filter)) {
        m_filters.append(filter);
    }
    if (m_isUp) {
        sendSubscription(m_handle.get(), filter);
    }
}

/// With the mutex held: the broker's reply must find the number.
void MqttNetwork::sendSubscription(mosquitto *handle, const QString &filter)
{
    int id = 0;
    const int code = mosquitto_subscribe_v5(handle, &id, filter.toUtf8().constData(), 1,
                                            MQTT_SUB_OPT_SEND_RETAIN_NEW, nullptr);
    if (code == MOSQ_ERR_SUCCESS) {
        m_subscriptions.emplace_back(id, filter);
    }
}

void MqttNetwork::unsubscribe(const QString &filter)
{
    const std::lock_guard lock(m_mutex);
    m_filters.removeAll(filter);
    if (m_isUp) {
        mosquitto_unsubscribe_v5(m_handle.get(), nullptr, filter.toUtf8().constData(), nullptr);
    }
}

int MqttNetwork::publish(const MqttMessage &message)
{
    const QByteArray topic = message.topic.toUtf8();
    if (topic.size() + message.payload.size() > MqttConnection::maxPacketBytes) {
        return -1;
    }
    Properties properties;
    if (message.expirySeconds > 0) {
        properties.add(MQTT_PROP_MESSAGE_EXPIRY_INTERVAL, static_cast<uint>(message.expirySeconds));
    }
    const std::lock_guard lock(m_mutex);
    if (!m_isUp) {
        return -1;
    }
    int id = 0;
    const int code = mosquitto_publish_v5(m_handle.get(), &id, topic.constData(),
                                          message.payload.size(), message.payload.constData(),
                                          message.qos, message.isRetained, properties.list());
    return code == MOSQ_ERR_SUCCESS ? numberOf(id) : -1;
}

void MqttNetwork::endConnection(const QString &reason)
{
    const std::lock_guard lock(m_mutex);
    if (m_isUp) {
        m_requestedEnd = reason;
        mosquitto_disconnect_v5(m_handle.get(), MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
    }
}

void MqttNetwork::run()
{
    sigset_t signals;
    sigfillset(&signals);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    do {
        connectOnce();
        post(Disconnected{m_reason});
    } while (waitBeforeRetry());
    const std::lock_guard lock(m_mutex);
    m_isFinished = true;
    m_changed.notify_all();
}

/// Returns false if the connection is not wanted any more.
bool MqttNetwork::waitBeforeRetry()
{
    const qint64 longest = m_settings.maxReconnectMs;
    const qint64 doubled = qint64(m_settings.minReconnectMs)
                           << std::min(m_attempts + 2, maxReconnectShift);
    const qint64 max = m_isHopeless ? longest : std::min(longest, doubled);
    const qint64 min =
        m_isHopeless ? longest / 2 : std::min<qint64>(m_settings.minReconnectMs, max);
    const qint64 delay = min + QRandomGenerator::global()->bounded(int(max - min) + 1);
    ++m_attempts;
    std::unique_lock lock(m_mutex);
    return !m_changed.wait_for(lock, milliseconds(delay), [this] { return m_isStopping; });
}

/// Makes a connection and uses it until its end. A new handle each time: it has nothing left of the last one, and
/// reads the files again.
void MqttNetwork::connectOnce()
{
    m_reason.clear();
    m_logText.clear();
    m_isHopeless = false;
    const Handle handle = makeHandle();
    if (!handle || !setIdentity(handle.get()) || !connectTo(handle.get())) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_isStopping) {
            return;
        }
        m_handle = handle;
        ++m_generation;
        m_requestedEnd.clear();
    }
    useConnection(handle.get());
    const std::lock_guard lock(m_mutex);
    m_handle.reset();
    m_isUp = false;
    m_subscriptions.clear();
    if (!m_requestedEnd.isEmpty()) {
        m_reason = m_requestedEnd;
    }
}

MqttNetwork::Handle MqttNetwork::makeHandle()
{
    const Handle handle(mosquitto_new(m_settings.clientId.isEmpty()
                                          ? nullptr
                                          : m_settings.clientId.toUtf8().constData(),
                                      m_settings.sessionSeconds == 0, this),
                        mosquitto_destroy);
    if (!handle) {
        m_reason = QStringLiteral("the client id can't be used");
        return handle;
    }
    mosquitto_int_option(handle.get(), MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_int_option(handle.get(), MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_threaded_set(handle.get(), true);
    MqttCallbacks::set(handle.get());
    if (!m_will.topic.isEmpty()) {
        mosquitto_will_set_v5(handle.get(), m_will.topic.toUtf8().constData(),
                              m_will.payload.size(), m_will.payload.constData(), m_will.qos,
                              m_will.isRetained, nullptr);
    }
    return handle;
}

/// Encryption and the password.
bool MqttNetwork::setIdentity(mosquitto *handle)
{
    if (!m_settings.user.isEmpty()) {
        QFile file(m_settings.passwordFile);
        if (!m_settings.passwordFile.isEmpty() && !file.open(QIODevice::ReadOnly)) {
            m_reason = QStringLiteral("%1: %2").arg(m_settings.passwordFile, file.errorString());
            return false;
        }
        const QByteArray password = file.isOpen() ? firstLine(file) : QByteArray();
        mosquitto_username_pw_set(handle, m_settings.user.toUtf8().constData(), orNull(password));
    }
    if (!m_settings.isEncrypted) {
        return true;
    }
    const QByteArray ca = QFile::encodeName(m_settings.caFile);
    const QByteArray certificate = QFile::encodeName(m_settings.certificateFile);
    const QByteArray key = QFile::encodeName(m_settings.keyFile);
    for (const QByteArray &name : {ca, certificate, key}) {
        QFile file(QFile::decodeName(name));
        if (!name.isEmpty() && !file.open(QIODevice::ReadOnly)) {
            m_reason = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
            return false;
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
        m_reason =
            QStringLiteral("TLS can't be used: %1").arg(QLatin1String(mosquitto_strerror(code)));
    }
    return code == MOSQ_ERR_SUCCESS;
}

/// Resolves the name and connects. This may take long.
bool MqttNetwork::connectTo(mosquitto *handle)
{
    Properties properties;
    properties.add(MQTT_PROP_RECEIVE_MAXIMUM, receiveMaximum);
    properties.add(MQTT_PROP_MAXIMUM_PACKET_SIZE, MqttConnection::maxPacketBytes);
    if (m_settings.sessionSeconds > 0) {
        properties.add(MQTT_PROP_SESSION_EXPIRY_INTERVAL,
                       static_cast<uint>(m_settings.sessionSeconds));
    }
    // libmosquitto sends a ping after this time, and waits as long for the reply.
    const int code =
        mosquitto_connect_bind_v5(handle, m_settings.host.toUtf8().constData(), m_settings.port,
                                  m_settings.keepAliveSeconds / 2, nullptr, properties.list());
    const int error = errno;
    if (code == MOSQ_ERR_SUCCESS) {
        return true;
    }
    if (code == MOSQ_ERR_EAI) {
        m_reason = QStringLiteral("the name %1 can't be resolved").arg(m_settings.host);
    } else if (code == MOSQ_ERR_ERRNO) {
        m_reason = QString::fromLocal8Bit(std::strerror(error));
    } else {
        m_reason = m_logText.isEmpty() ? QLatin1String(mosquitto_strerror(code)) : m_logText;
    }
    return false;
}

void MqttNetwork::useConnection(mosquitto *handle)
{
    const auto start = Clock::now();
    const auto isUp = [this] {
        const std::lock_guard lock(m_mutex);
        return m_isUp;
    };
    int code = MOSQ_ERR_SUCCESS;
    while (code == MOSQ_ERR_SUCCESS) {
        auto timeout = milliseconds(m_settings.keepAliveSeconds * 1000);
        if (!isUp()) {
            timeout =
                acceptTimeout - std::chrono::duration_cast<milliseconds>(Clock::now() - start);
            if (timeout.count() <= 0) {
                m_reason = QStringLiteral("the broker does not respond");
                break;
            }
        }
        code = mosquitto_loop(handle, static_cast<int>(timeout.count()), 1);
        const std::lock_guard lock(m_mutex);
        if (m_hasUnhandled) {
            return;
        }
    }
    if (m_reason.isEmpty()) {
        switch (code) {
        case MOSQ_ERR_KEEPALIVE:
            m_reason = QStringLiteral("the broker does not respond");
            break;
        case MOSQ_ERR_TLS:
            m_reason = m_logText.isEmpty() ? QStringLiteral("TLS failed") : m_logText;
            break;
        default:
            m_reason = QStringLiteral("the connection was lost");
        }
    }
    if (isUp() && Clock::now() - start > milliseconds(m_settings.maxReconnectMs) / 2) {
        m_attempts = 0;
    }
}

void MqttNetwork::on_connect(mosquitto *handle, int code, bool hasSession)
{
    if (code != MQTT_RC_SUCCESS) {
        m_reason = codeText(code);
        m_isHopeless = true;
        return;
    }
    const std::lock_guard lock(m_mutex);
    m_isUp = true;
    for (const QString &filter : m_filters) {
        sendSubscription(handle, filter);
    }
    postLocked(Connected{hasSession});
}

void MqttNetwork::on_disconnect(int code)
{
    // Smaller numbers are errors of libmosquitto, of which useConnection() hears as well.
    if (code >= MQTT_RC_UNSPECIFIED && m_reason.isEmpty()) {
        m_reason = codeText(code);
        m_isHopeless = code == MQTT_RC_SESSION_TAKEN_OVER;
    }
}

/// Waits until the owner has handled enough. libmosquitto acknowledges the message after this.
void MqttNetwork::on_message(const MqttMessage &message)
{
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    postLocked(message);
    m_changed.wait(lock, [this] { return m_waiting <= m_settings.maxWaiting || m_isStopping; });
    if (m_waiting > m_settings.maxWaiting) {
        m_hasUnhandled = true; // The connection ends before the broker gets the acknowledgement.
    }
}

void MqttNetwork::on_publish(int messageId, int code)
{
    post(Published{numberOf(messageId), code});
}

void MqttNetwork::on_subscribe(int messageId, int code)
{
    const std::lock_guard lock(m_mutex);
    const auto found =
        std::find_if(m_subscriptions.begin(), m_subscriptions.end(),
                     [messageId](const auto &sent) { return sent.first == messageId; });
    if (found != m_subscriptions.end()) {
        postLocked(Subscribed{found->second, code});
        m_subscriptions.erase(found);
    }
}

void MqttNetwork::post(Event event)
{
    const std::lock_guard lock(m_mutex);
    postLocked(std::move(event));
}

void MqttNetwork::postLocked(Event event)
{
    if (m_owner == nullptr) {
        return;
    }
    m_events.push_back(std::move(event));
    if (m_events.size() == 1) {
        QMetaObject::invokeMethod(
            m_owner, [self = shared_from_this()] { self->deliver(); }, Qt::QueuedConnection);
    }
}

/// In the owner's thread.
void MqttNetwork::deliver()
{
    std::vector<Event> events;
    QPointer<MqttConnection> owner;
    {
        const std::lock_guard lock(m_mutex);
        events.swap(m_events);
        owner = m_owner;
    }
    for (const Event &event : events) {
        if (owner) {
            emitEvent(*owner, event);
        }
        const std::lock_guard lock(m_mutex);
        if (m_owner == nullptr) {
            return;
        }
        if (std::holds_alternative<MqttMessage>(event)) {
            --m_waiting;
            m_changed.notify_all();
        }
    }
}

void MqttNetwork::emitEvent(MqttConnection &owner, const Event &event)
{
    if (const auto *connected = std::get_if<Connected>(&event)) {
        owner.m_isConnected = true;
        Q_EMIT owner.connected(connected->hasSession);
    } else if (const auto *disconnected = std::get_if<Disconnected>(&event)) {
        owner.m_isConnected = false;
        Q_EMIT owner.disconnected(disconnected->reason);
    } else if (const auto *published = std::get_if<Published>(&event)) {
        if (published->reasonCode < MQTT_RC_UNSPECIFIED) {
            Q_EMIT owner.published(published->number);
        } else {
            Q_EMIT owner.refused(published->number, codeText(published->reasonCode));
        }
    } else if (const auto *subscribed = std::get_if<Subscribed>(&event)) {
        if (subscribed->reasonCode >= MQTT_RC_UNSPECIFIED) {
            Q_EMIT owner.subscriptionRefused(subscribed->filter, codeText(subscribed->reasonCode));
        }
    } else {
        Q_EMIT owner.received(std::get<MqttMessage>(event));
    }
}
