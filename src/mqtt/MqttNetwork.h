// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mqtt/MqttAttempt.h"

#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <memory>
#include <variant>
#include <vector>

class MqttConnection;

/// What an MqttConnection hides: libmosquitto in the event loop.
///
/// What arrives is read first, then handled by the owner, then acknowledged: with the next message of the owner, which
/// often is the answer, or alone a few milliseconds later. libmosquitto's own functions never call the owner.
class MqttNetwork : public QObject, public std::enable_shared_from_this<MqttNetwork>
{
    Q_OBJECT

public:
    MqttNetwork(MqttConnection *owner, const MqttSettings &settings);

    void setWill(const MqttMessage &will) { m_will = will; }
    void start();
    /// The owner is not used any more.
    void stop();
    void subscribe(const QString &filter);
    void unsubscribe(const QString &filter);
    int publish(const MqttMessage &message);
    void endConnection(const QString &reason);

private Q_SLOTS:
    void on_readable_activated();
    void on_writable_activated();
    void on_acceptTimer_timeout();
    void on_ackTimer_timeout();
    void on_pingTimer_timeout();
    void on_retryTimer_timeout();

private:
    friend struct MqttCallbacks;

    using Handle = MqttAttempt::Handle;
    using Clock = std::chrono::steady_clock;

    // For the owner:
    struct Connected
    {
        bool hasSession;
    };
    struct Published
    {
        int number;
        int reasonCode;
    };
    struct Subscribed
    {
        QString filter;
        int reasonCode;
    };
    using Event = std::variant<Connected, Published, Subscribed, MqttMessage>;

    void use(const Handle &handle);
    int read();
    int write();
    int writeOrDelay();
    void writeSoon();
    void check(int code);
    void lose(const QString &reason);
    QString lossText(int code) const;
    std::chrono::milliseconds untilPing() const;
    int retryMs();

    void post(Event event);
    void deliver();
    void emitEvent(const Event &event);
    int numberOf(int messageId) const { return m_generation << 16 | messageId; }
    void sendSubscription(const QString &filter);

    // Of libmosquitto:
    void on_connect(int code, bool hasSession);
    void on_disconnect(int code);
    void on_publish(int messageId, int code);
    void on_subscribe(int messageId, int code);

    const MqttSettings m_settings;
    MqttMessage m_will; ///< none if it has no topic
    MqttConnection *m_owner;
    std::unique_ptr<MqttAttempt> m_attempt; ///< null unless one is under way
    Handle m_handle;                        ///< null while there is no connection
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    bool m_isUp = false;            ///< the broker has accepted the connection
    int m_acks = 0;                 ///< of messages that have been read, and not been sent
    bool m_hasMoreThanAcks = false; ///< something else may wait to be sent
    bool m_isServing = false;       ///< the acknowledgements of what is handled must wait
    int m_generation = 0;           ///< counts connections
    int m_attempts = 0;             ///< without success
    Clock::time_point m_start;      ///< of the connection
    Clock::time_point m_lastRead;
    Clock::time_point m_lastWrite;
    QTimer m_acceptTimer; ///< until the broker must have accepted the connection
    QTimer m_ackTimer;    ///< until delayed acknowledgements are sent alone
    QTimer m_pingTimer;   ///< until the broker may have to be pinged
    QTimer m_retryTimer;
    QString m_reason;          ///< why the connection ends
    QString m_logText;         ///< what libmosquitto has said last about an error
    bool m_isHopeless = false; ///< trying again soon has no use
    QStringList m_filters;
    std::vector<std::pair<int, QString>> m_subscriptions; ///< sent, by their numbers
    std::vector<Event> m_events;
};
