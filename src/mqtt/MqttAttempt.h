// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "mqtt/MqttMessage.h"
#include "mqtt/MqttSettings.h"

#include <QObject>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

struct mosquitto;

/// An attempt to connect to a broker. Resolving its name and reading files may take long, so this is done in a thread
/// of its own, which may outlive the attempt.
class MqttAttempt
{
public:
    using Handle = std::shared_ptr<mosquitto>;
    using Finish = std::function<void(const Result<Handle> &result)>;

    /// finish gets a handle that is connected, but to which the broker has not replied. It is called once, from the
    /// event loop of the context's thread, unless the attempt or the context is destroyed before.
    MqttAttempt(const MqttSettings &settings, const MqttMessage &will, QObject *context,
                const Finish &finish);
    /// Waits for the thread, but no longer than 2 s.
    ~MqttAttempt();
    MqttAttempt(const MqttAttempt &) = delete;
    MqttAttempt &operator=(const MqttAttempt &) = delete;

    /// What libmosquitto says of an error, without the functions and numbers of OpenSSL.
    static QString errorText(const char *log);

private:
    class Connecting;

    /// What the thread shares with the attempt.
    struct Shared
    {
        std::mutex mutex; ///< protects what follows
        std::condition_variable changed;
        QObject *context = nullptr; ///< null: nobody wants the result
        bool isFinished = false;
    };

    const std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
    std::thread m_thread;
};
