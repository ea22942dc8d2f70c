// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "mqtt/MqttNetwork.h"

#include "mqtt/MqttConnection.h"
#include <core/base/connect.h>

#include <QRandomGenerator>

#include <algorithm>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace {
using std::chrono::milliseconds;

constexpr milliseconds stopTimeout(2000);
constexpr int acceptTimeoutMs = 10000;
constexpr std::size_t maxEventsPerTurn = 10; // the host can work on the first ones meanwhile
constexpr int maxReconnectShift = 16;
constexpr int ackDelayMs = 5;
constexpr int maxDelayedAcks = 4;     // brokers have some 20 messages under way
constexpr int oldProtocolRefused = 1; // how brokers for MQTT 3.1.1 refuse a newer version

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

bool isClosedByPeer(int socket)
{
    pollfd state{socket, POLLRDHUP, 0};
    return ::poll(&state, 1, 0) > 0;
}

/// Lets the system collect what is written, until the end of the scope.
class Cork
{
public:
    explicit Cork(int socket)
        : m_socket(socket)
    {
        set(1);
    }
    ~Cork() { set(0); }
    Cork(const Cork &) = delete;
    Cork &operator=(const Cork &) = delete;

private:
    void set(int value) const
    {
        ::setsockopt(m_socket, IPPROTO_TCP, TCP_CORK, &value, sizeof value);
    }

    const int m_socket;
};
} // namespace

/// Forwards what libmosquitto calls.
struct MqttCallbacks
{
    static MqttNetwork &of(void *network) { return *static_cast<MqttNetwork *>(network); }

    static void set(mosquitto *handle, MqttNetwork *network)
    {
        mosquitto_user_data_set(handle, network);
        mosquitto_connect_v5_callback_set(handle, [](mosquitto *, void *network, int code,
                                                     int flags, const mosquitto_property *) {
            of(network).on_connect(code, (flags & 1) != 0);
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
            of(network).m_acks += message->qos > 0 ? 1 : 0;
            of(network).post(copy);
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
                                           of(network).m_logText = MqttAttempt::errorText(text);
                                       }
                                   });
    }
};

MqttNetwork::MqttNetwork(MqttConnection *owner, const MqttSettings &settings)
    : m_settings(settings)
    , m_owner(owner)
{
    prepareLibrary();
    m_acceptTimer.setInterval(acceptTimeoutMs);
    m_pingTimer.setTimerType(Qt::PreciseTimer);
    m_ackTimer.setInterval(ackDelayMs);
    for (QTimer *timer : {&m_acceptTimer, &m_pingTimer, &m_ackTimer, &m_retryTimer}) {
        timer->setSingleShot(true);
    }
    tavoConnect(&m_acceptTimer, &QTimer::timeout, this, &MqttNetwork::on_acceptTimer_timeout);
    tavoConnect(&m_pingTimer, &QTimer::timeout, this, &MqttNetwork::on_pingTimer_timeout);
    tavoConnect(&m_ackTimer, &QTimer::timeout, this, &MqttNetwork::on_ackTimer_timeout);
    tavoConnect(&m_retryTimer, &QTimer::timeout, this, &MqttNetwork::on_retryTimer_timeout);
}

void MqttNetwork::start()
{
    m_attempt = std::make_unique<MqttAttempt>(
        m_settings, m_will, this, [this](const Result<Handle> &result) {
            m_attempt.reset();
            m_isHopeless = false;
            if (const auto *failure = std::get_if<Failure>(&result)) {
                lose(failure->reason);
            } else {
                use(std::get<Handle>(result));
            }
        });
}

void MqttNetwork::use(const Handle &handle)
{
    m_handle = handle;
    ++m_generation;
    m_reason.clear();
    m_logText.clear();
    MqttCallbacks::set(handle.get(), this);
    m_start = m_lastRead = m_lastWrite = Clock::now();
    const int socket = mosquitto_socket(handle.get());
    m_readable = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read);
    m_writable = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Write);
    tavoConnect(m_readable.get(), &QSocketNotifier::activated, this,
                &MqttNetwork::on_readable_activated);
    tavoConnect(m_writable.get(), &QSocketNotifier::activated, this,
                &MqttNetwork::on_writable_activated);
    m_acceptTimer.start();
    m_pingTimer.start(untilPing());
    check(write());
}

void MqttNetwork::stop()
{
    m_owner = nullptr;
    m_attempt.reset();
    m_retryTimer.stop();
    if (!m_handle) {
        return;
    }
    mosquitto *const handle = m_handle.get();
    mosquitto_disconnect_v5(handle, MQTT_RC_NORMAL_DISCONNECTION, nullptr);
    const auto deadline = Clock::now() + stopTimeout;
    // What is read now would be acknowledged, although nobody handles it.
    while (!m_isServing && mosquitto_want_write(handle) && Clock::now() < deadline) {
        pollfd socket{mosquitto_socket(handle), POLLOUT, 0};
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        ::poll(&socket, 1, std::max(static_cast<int>(left.count()), 0));
        if (mosquitto_loop_write(handle, 1) != MOSQ_ERR_SUCCESS) {
            break;
        }
    }
    lose({});
}

void MqttNetwork::subscribe(const QString &filter)
{
    if (!m_filters.contains(filter)) {
        m_filters.append(filter);
    }
    if (m_isUp) {
        sendSubscription(filter);
        writeSoon();
    }
}

void MqttNetwork::sendSubscription(const QString &filter)
{
    int id = 0;
    constexpr int options = MQTT_SUB_OPT_SEND_RETAIN_NEW | MQTT_SUB_OPT_RETAIN_AS_PUBLISHED;
    const int code = mosquitto_subscribe_v5(m_handle.get(), &id, filter.toUtf8().constData(), 1,
                                            options, nullptr);
    if (code == MOSQ_ERR_SUCCESS) {
        m_subscriptions.emplace_back(id, filter);
    }
}

void MqttNetwork::unsubscribe(const QString &filter)
{
    m_filters.removeAll(filter);
    if (m_isUp) {
        mosquitto_unsubscribe_v5(m_handle.get(), nullptr, filter.toUtf8().constData(), nullptr);
        writeSoon();
    }
}

int MqttNetwork::publish(const MqttMessage &message)
{
    const QByteArray topic = message.topic.toUtf8();
    if (!m_isUp || topic.size() + message.payload.size() > MqttConnection::maxPacketBytes) {
        return -1;
    }
    mosquitto_property *properties = nullptr;
    if (message.expirySeconds > 0) {
        mosquitto_property_add_int32(&properties, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL,
                                     static_cast<uint32_t>(message.expirySeconds));
    }
    int id = 0;
    const int code = mosquitto_publish_v5(m_handle.get(), &id, topic.constData(),
                                          message.payload.size(), message.payload.constData(),
                                          message.qos, message.isRetained, properties);
    mosquitto_property_free_all(&properties);
    if (code != MOSQ_ERR_SUCCESS) {
        return -1;
    }
    writeSoon();
    return numberOf(id);
}

void MqttNetwork::endConnection(const QString &reason)
{
    if (m_isUp) {
        m_reason = reason;
        mosquitto_disconnect_v5(m_handle.get(), MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
        writeSoon();
    }
}

void MqttNetwork::on_readable_activated()
{
    if (m_isServing) { // A slot of the owner runs an event loop.
        m_readable->setEnabled(false);
    }
    if (m_isServing || !m_handle) {
        return;
    }
    const auto self = shared_from_this(); // A slot may destroy the owner.
    const Handle handle = m_handle;
    m_isServing = true;
    const int code = read();
    deliver();
    m_isServing = false;
    if (m_handle == handle && m_owner != nullptr) {
        m_readable->setEnabled(true);
        check(code == MOSQ_ERR_SUCCESS ? writeOrDelay() : code);
    }
}

/// Delays a few acknowledgements if nothing else waits, so that they leave with what the owner publishes next.
/// Returns a code of libmosquitto.
int MqttNetwork::writeOrDelay()
{
    if (m_acks == 0 || m_acks > maxDelayedAcks || m_hasMoreThanAcks) {
        return write();
    }
    if (!m_ackTimer.isActive()) {
        m_ackTimer.start();
    }
    return MOSQ_ERR_SUCCESS;
}

void MqttNetwork::on_ackTimer_timeout()
{
    if (!m_isServing) {
        check(write());
    }
}

/// Reads what has arrived, up to a limit. Returns a code of libmosquitto.
int MqttNetwork::read()
{
    m_lastRead = Clock::now();
    // One call reads at least one packet. What reports nothing has either been the last one, or is followed by
    // others in the socket, never by some that are already decrypted.
    for (std::size_t before = 0; m_events.size() < maxEventsPerTurn; before = m_events.size()) {
        const int code = mosquitto_loop_read(m_handle.get(), 1);
        if (code != MOSQ_ERR_SUCCESS || mosquitto_socket(m_handle.get()) < 0 ||
            m_events.size() == before) {
            return code;
        }
    }
    // There may be decrypted ones.
    QMetaObject::invokeMethod(this, &MqttNetwork::on_readable_activated, Qt::QueuedConnection);
    return MOSQ_ERR_SUCCESS;
}

void MqttNetwork::on_writable_activated()
{
    if (m_isServing) {
        m_writable->setEnabled(false);
    } else {
        check(write());
    }
}

/// Sends what the system takes. Returns a code of libmosquitto.
int MqttNetwork::write()
{
    m_acks = 0;
    m_hasMoreThanAcks = false;
    m_ackTimer.stop();
    if (!mosquitto_want_write(m_handle.get())) { // The handshake of TLS may wait for the broker.
        m_writable->setEnabled(false);
        return MOSQ_ERR_SUCCESS;
    }
    const int socket = mosquitto_socket(m_handle.get());
    if (isClosedByPeer(socket)) {
        // What the broker said last is read first: a failed write would lose it.
        m_writable->setEnabled(false);
        return MOSQ_ERR_SUCCESS;
    }
    m_lastWrite = Clock::now();
    // A broker that refuses one of several packets must not close the connection before all are written.
    const Cork cork(socket);
    const int code = mosquitto_loop_write(m_handle.get(), 1);
    if (code == MOSQ_ERR_SUCCESS && mosquitto_socket(m_handle.get()) >= 0) {
        m_writable->setEnabled(mosquitto_want_write(m_handle.get()));
    }
    return code;
}

/// Sends, unless this follows anyway. A failure is reported later, because the owner is the caller.
void MqttNetwork::writeSoon()
{
    if (m_isServing) {
        m_hasMoreThanAcks = true;
        return;
    }
    const int code = write();
    if (code != MOSQ_ERR_SUCCESS || mosquitto_socket(m_handle.get()) < 0) {
        m_readable->setEnabled(false);
        m_writable->setEnabled(false);
        QMetaObject::invokeMethod(
            this,
            [this, code, generation = m_generation] {
                if (m_handle && generation == m_generation) {
                    check(code);
                }
            },
            Qt::QueuedConnection);
    }
}

/// Ends the connection if it has failed.
void MqttNetwork::check(int code)
{
    if (code != MOSQ_ERR_SUCCESS || mosquitto_socket(m_handle.get()) < 0) {
        lose(lossText(code));
    }
}

QString MqttNetwork::lossText(int code) const
{
    if (!m_reason.isEmpty()) {
        return m_reason;
    }
    if (code == MOSQ_ERR_TLS) {
        return m_logText.isEmpty() ? QStringLiteral("TLS failed") : m_logText;
    }
    if (m_isUp || !m_settings.isEncrypted) {
        return QStringLiteral("the connection was lost");
    }
    // A broker that wants another certificate tells nobody.
    return m_settings.certificateFile.isEmpty()
               ? QStringLiteral("the broker ended the connection: does it want a certificate?")
               : QStringLiteral("the broker ended the connection: does it trust this certificate?");
}

void MqttNetwork::on_acceptTimer_timeout()
{
    lose(QStringLiteral("the broker does not respond"));
}

/// When libmosquitto sends a ping or misses the reply to one, unless there was traffic.
milliseconds MqttNetwork::untilPing() const
{
    const auto time =
        std::min(m_lastRead, m_lastWrite) + std::chrono::seconds(m_settings.pingSeconds());
    return std::max(std::chrono::ceil<milliseconds>(time - Clock::now()), milliseconds::zero());
}

void MqttNetwork::on_pingTimer_timeout()
{
    if (untilPing() == milliseconds::zero() && !m_isServing) {
        if (mosquitto_loop_misc(m_handle.get()) != MOSQ_ERR_SUCCESS) {
            lose(QStringLiteral("the broker does not respond"));
            return;
        }
        m_lastRead = Clock::now();
        const int code = write();
        if (code != MOSQ_ERR_SUCCESS) {
            check(code);
            return;
        }
    }
    m_pingTimer.start(std::max(untilPing(), milliseconds(1)));
}

void MqttNetwork::lose(const QString &reason)
{
    if (m_isUp && Clock::now() - m_start > milliseconds(m_settings.maxReconnectMs) / 2) {
        m_attempts = 0;
    }
    m_isUp = false;
    m_acceptTimer.stop();
    m_pingTimer.stop();
    m_ackTimer.stop();
    m_acks = 0;
    // One of them may be the caller.
    for (auto *notifier : {m_readable.release(), m_writable.release()}) {
        if (notifier != nullptr) {
            notifier->setEnabled(false);
            notifier->deleteLater();
        }
    }
    m_handle.reset();
    m_subscriptions.clear();
    if (m_owner != nullptr) {
        m_retryTimer.start(retryMs());
        const auto self = shared_from_this();
        deliver();
        if (m_owner != nullptr) {
            m_owner->m_isConnected = false;
            Q_EMIT m_owner->disconnected(reason);
        }
    }
}

int MqttNetwork::retryMs()
{
    const qint64 longest = m_settings.maxReconnectMs;
    const qint64 doubled = qint64(m_settings.minReconnectMs)
                           << std::min(m_attempts + 2, maxReconnectShift);
    const qint64 max = m_isHopeless ? longest : std::min(longest, doubled);
    const qint64 min =
        m_isHopeless ? longest / 2 : std::min<qint64>(m_settings.minReconnectMs, max);
    ++m_attempts;
    return int(min + QRandomGenerator::global()->bounded(int(max - min) + 1));
}

void MqttNetwork::on_retryTimer_timeout()
{
    start();
}

void MqttNetwork::on_connect(int code, bool hasSession)
{
    if (code != MQTT_RC_SUCCESS) {
        m_reason = codeText(code);
        m_isHopeless = true;
        return;
    }
    m_isUp = true;
    m_acceptTimer.stop();
    // From now on it would be called for each packet, and each time with a text made for it.
    mosquitto_log_callback_set(m_handle.get(), nullptr);
    for (const QString &filter : qAsConst(m_filters)) {
        sendSubscription(filter);
    }
    post(Connected{hasSession});
}

void MqttNetwork::on_disconnect(int code)
{
    // Smaller numbers are errors of libmosquitto, which its functions return as well.
    if (code >= MQTT_RC_UNSPECIFIED && m_reason.isEmpty()) {
        m_reason = codeText(code);
        m_isHopeless = code == MQTT_RC_SESSION_TAKEN_OVER;
    }
}

void MqttNetwork::on_publish(int messageId, int code)
{
    post(Published{numberOf(messageId), code});
}

void MqttNetwork::on_subscribe(int messageId, int code)
{
    const auto found =
        std::find_if(m_subscriptions.begin(), m_subscriptions.end(),
                     [messageId](const auto &sent) { return sent.first == messageId; });
    if (found != m_subscriptions.end()) {
        post(Subscribed{found->second, code});
        m_subscriptions.erase(found);
    }
}

void MqttNetwork::post(Event event)
{
    // libmosquitto may have answered the others, or may send next what has waited for them.
    m_hasMoreThanAcks = m_hasMoreThanAcks || !std::holds_alternative<MqttMessage>(event);
    m_events.push_back(std::move(event));
    if (!m_isServing && m_events.size() == 1) {
        QMetaObject::invokeMethod(
            this, [this] { deliver(); }, Qt::QueuedConnection);
    }
}

void MqttNetwork::deliver()
{
    const auto self = shared_from_this();
    const auto events = std::exchange(m_events, {});
    bool hasMessage = false;
    for (const Event &event : events) {
        if (m_owner != nullptr) {
            emitEvent(event);
            hasMessage = hasMessage || std::holds_alternative<MqttMessage>(event);
        }
    }
    if (m_owner != nullptr && hasMessage) {
        Q_EMIT m_owner->handled();
    }
}

void MqttNetwork::emitEvent(const Event &event)
{
    MqttConnection &owner = *m_owner;
    if (const auto *connected = std::get_if<Connected>(&event)) {
        owner.m_isConnected = true;
        Q_EMIT owner.connected(connected->hasSession);
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
