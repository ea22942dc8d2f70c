// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mqtt/MqttMessage.h"
#include "mqtt/MqttSettings.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <variant>
#include <vector>

class MqttConnection;
struct mosquitto;

/// The thread of an MqttConnection, and what both share. The thread may outlive the connection, if it waits for
/// the resolver.
class MqttNetwork : public std::enable_shared_from_this<MqttNetwork>
{
public:
    MqttNetwork(MqttConnection *owner, const MqttSettings &settings);

    // Called by the owner:
    void setWill(const MqttMessage &will) { m_will = will; }
    void start();
    /// Waits for the thread for a limited time. The owner is not used any more.
    void stop();
    void subscribe(const QString &filter);
    void unsubscribe(const QString &filter);
    int publish(const MqttMessage &message);
    void endConnection(const QString &reason);

private:
    friend struct MqttCallbacks;

    using Handle = std::shared_ptr<mosquitto>;
    using Clock = std::chrono::steady_clock;

    // For the owner:
    struct Connected
    {
        bool hasSession;
    };
    struct Disconnected
    {
        QString reason;
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
    using Event = std::variant<Connected, Disconnected, Published, Subscribed, MqttMessage>;

    void run();
    void connectOnce();
    Handle makeHandle();
    bool setIdentity(mosquitto *handle);
    bool connectTo(mosquitto *handle);
    void useConnection(mosquitto *handle);
    bool waitBeforeRetry();

    void post(Event event);
    void postLocked(Event event);
    void deliver();
    void emitEvent(MqttConnection &owner, const Event &event);
    int numberOf(int messageId) const { return m_generation << 16 | messageId; }
    void sendSubscription(mosquitto *handle, const QString &filter);

    // Of libmosquitto, called in the thread:
    void on_connect(mosquitto *handle, int code, bool hasSession);
    void on_disconnect(int code);
    void on_message(const MqttMessage &message);
    void on_publish(int messageId, int code);
    void on_subscribe(int messageId, int code);

    const MqttSettings m_settings;
    MqttMessage m_will; ///< none if it has no topic

    // Used by the thread only:
    QString m_reason;          ///< why the connection has ended
    QString m_logText;         ///< what libmosquitto has said last about an error
    bool m_isHopeless = false; ///< trying again soon has no use
    int m_attempts = 0;        ///< without success

    std::thread m_thread;
    std::mutex m_mutex; ///< protects what follows
    std::condition_variable m_changed;
    MqttConnection *m_owner;
    bool m_isStopping = false;
    bool m_isFinished = false;
    bool m_isUp = false;         ///< the broker has accepted the connection
    bool m_hasUnhandled = false; ///< a message was given up at the end
    Handle m_handle;             ///< null while there is no connection
    int m_generation = 0;        ///< counts connections
    int m_waiting = 0;           ///< messages among the events
    QString m_requestedEnd;
    QStringList m_filters;
    std::vector<std::pair<int, QString>> m_subscriptions; ///< sent, by their numbers
    std::vector<Event> m_events;
};
