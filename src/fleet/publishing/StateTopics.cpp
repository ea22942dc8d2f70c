// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/publishing/StateTopics.h"

#include <client/BusyHost.h>
#include <core/base/connect.h>
#include <core/tavo.h>

#include <QJsonDocument>

#include <utility>

namespace {
constexpr int intervalMs = 100;

QVector<CMPath> paths()
{
    return {TavoNotificationDisplayCurrentPath(), TavoNotificationPlayerIsPlayingPath(),
            TavoAttentionDoNotDisturbPath(), TavoPlayerMainAudioStatePath()};
}

QString beginningOf(const QString &text)
{
    constexpr int maxLength = 1000;
    const bool isSplit = text.size() > maxLength && text[maxLength - 1].isHighSurrogate();
    return text.left(isSplit ? maxLength - 1 : maxLength);
}
} // namespace

StateTopics::StateTopics(MqttConnection &connection, TavoClient &client, const QString &device)
    : m_connection(connection)
    , m_client(client)
    , m_device(device)
{
    m_clock.start();
    m_timer.setSingleShot(true);
    m_displayTimer.setSingleShot(true);
    m_displayTimer.setInterval(intervalMs);
    tavoConnect(&m_displayTimer, &QTimer::timeout, this, &StateTopics::on_displayTimer_timeout);
    tavoConnect(&m_timer, &QTimer::timeout, this, &StateTopics::on_timer_timeout);
    tavoConnect(&connection, &MqttConnection::connected, this,
                &StateTopics::on_connection_connected);
    tavoConnect(&connection, &MqttConnection::published, this,
                &StateTopics::on_connection_published);
    tavoConnect(&connection, &MqttConnection::refused, this, &StateTopics::on_connection_published);
    tavoConnect(&client, &TavoClient::availableChanged, this,
                &StateTopics::on_client_availableChanged);
    tavoConnect(&client, &TavoClient::valueChanged, this, &StateTopics::on_client_valueChanged);
    tavoConnect(&client, &TavoClient::changesDropped, this, &StateTopics::on_client_changesDropped);
    tavoConnect(&client, &TavoClient::subscriptionFailed, this,
                &StateTopics::on_client_subscriptionFailed);
    m_readTimer.setSingleShot(true);
    m_readTimer.setInterval(askBusyHostAgainMs);
    tavoConnect(&m_readTimer, &QTimer::timeout, this, &StateTopics::readNext);
}

void StateTopics::on_client_availableChanged(bool available)
{
    if (!available) {
        showMessage({});
        set("sound", {{QStringLiteral("sounding"), false}});
        return;
    }
    for (const CMPath &path : paths()) {
        read(path);
    }
}

void StateTopics::read(const CMPath &path)
{
    if (!m_unread.contains(path)) {
        m_unread.append(path);
    }
    readNext();
}

/// One after the other: a bus may refuse who has many calls without replies.
void StateTopics::readNext()
{
    if (m_isReading || m_readTimer.isActive() || m_unread.isEmpty() || !m_client.isAvailable()) {
        return;
    }
    m_isReading = true;
    const CMPath path = m_unread.takeFirst();
    m_client.subscribe(path, TavoClient::Change::Value);
    m_client.getValue(path).onFinished(this, [this, path](const CMReply<QVariant> &reply) {
        m_isReading = false;
        if (!reply.error().isError()) {
            on_client_valueChanged(path, reply.value());
        } else if (isBusy(reply.error())) {
            readLater(path);
        }
        readNext();
    });
}

void StateTopics::readLater(const CMPath &path)
{
    m_readTimer.start();
    read(path);
}

void StateTopics::on_client_subscriptionFailed(const CMPath &path, const CMError &error)
{
    if (isBusy(error) && paths().contains(path)) {
        readLater(path);
    }
}

void StateTopics::on_client_changesDropped(const CMPath &path)
{
    if (paths().contains(path)) {
        read(path);
    }
}

void StateTopics::on_client_valueChanged(const CMPath &path, const QVariant &value)
{
    const TavoValue record(value.toHash());
    if (path == TavoNotificationDisplayCurrentPath()) {
        showMessage(record.displayCurrent());
    } else if (path == TavoNotificationPlayerIsPlayingPath()) {
        set("sound", {{QStringLiteral("sounding"), record.bool_()}});
    } else if (path == TavoAttentionDoNotDisturbPath()) {
        const auto quiet = record.attentionDoNotDisturb();
        set("quiet",
            {{QStringLiteral("quiet"), quiet.on()}, {QStringLiteral("until"), quiet.until()}});
    } else if (path == TavoPlayerMainAudioStatePath()) {
        const auto audio = record.mainAudioState();
        set("volume", {{QStringLiteral("volume"), audio.volume()},
                       {QStringLiteral("playing"), audio.playing()}});
    }
}

/// Its texts are in its node, which is read as seldom as the topic may change.
void StateTopics::showMessage(const TavoNotificationDisplayCurrent &current)
{
    m_current = current;
    ++m_displayChanges;
    if (!m_displayTimer.isActive()) {
        m_displayTimer.start();
        describe();
    } else if (!m_isPaused) {
        // Each message that is opened changes the number of those that wait.
        m_isPaused = true;
        m_client.unsubscribe(TavoNotificationDisplayCurrentPath(), TavoClient::Change::Value);
    }
}

void StateTopics::describe()
{
    m_described = m_displayChanges;
    if (m_current.path().isEmpty()) {
        set("display", {{QStringLiteral("shown"), false}});
        return;
    }
    m_client.describe({m_current.path()})
        .onFinished(this, [this, current = m_current, change = m_displayChanges](
                              const CMReply<QVector<TavoClientDescription>> &reply) {
            if (isBusy(reply.error())) {
                readLater(TavoNotificationDisplayCurrentPath());
            }
            if (change != m_displayChanges || reply.value().isEmpty()) {
                return;
            }
            const TavoClientDescription message = reply.value().first();
            set("display", {{QStringLiteral("shown"), true},
                            {QStringLiteral("title"), beginningOf(message.title)},
                            {QStringLiteral("text"), beginningOf(message.text)},
                            {QStringLiteral("priority"), int(current.priority())},
                            {QStringLiteral("waiting"), current.waiting()}});
        });
}

void StateTopics::on_displayTimer_timeout()
{
    if (std::exchange(m_isPaused, false)) {
        read(TavoNotificationDisplayCurrentPath());
    } else if (m_described != m_displayChanges) {
        m_displayTimer.start();
        describe();
    }
}

void StateTopics::set(const char *what, const QJsonObject &state)
{
    const QByteArray payload = QJsonDocument(state).toJson(QJsonDocument::Compact);
    State &known = m_states[QLatin1String(what)];
    if (known.payload != payload) {
        known.payload = payload;
        known.isDue = true;
        publishDue();
    }
}

void StateTopics::publishDue()
{
    if (!m_connection.isConnected()) {
        return;
    }
    const qint64 now = m_clock.elapsed();
    qint64 next = intervalMs + 1;
    for (auto state = m_states.begin(); state != m_states.end(); ++state) {
        if (!state->isDue || state->inFlight >= 0) {
            continue;
        }
        const qint64 wait = state->last == 0 ? 0 : state->last + intervalMs - now;
        if (wait > 0) {
            next = qMin(next, wait);
            continue;
        }
        MqttMessage message;
        message.topic = FleetTopics::state(m_device, state.key());
        message.payload = state->payload;
        message.isRetained = true;
        state->inFlight = m_connection.publish(message);
        state->isDue = false;
        state->last = qMax<qint64>(now, 1);
    }
    if (next <= intervalMs && !m_timer.isActive()) {
        m_timer.start(int(next));
    }
}

void StateTopics::on_timer_timeout()
{
    publishDue();
}

void StateTopics::on_connection_connected(bool /*hasSession*/)
{
    for (State &state : m_states) {
        state.isDue = true;
        state.inFlight = -1;
    }
    publishDue();
}

/// Or refused.
void StateTopics::on_connection_published(int number)
{
    for (State &state : m_states) {
        if (state.inFlight == number) {
            state.inFlight = -1;
            publishDue();
            return;
        }
    }
}
