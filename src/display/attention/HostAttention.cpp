// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/HostAttention.h"

#include <client/BusyHost.h>
#include <core/base/connect.h>
#include <core/records/value.h>

#include <utility>

HostAttention::HostAttention(TavoClient &client, QObject *parent)
    : QObject(parent)
    , m_client(client)
{
    tavoConnect(&client, &TavoClient::availableChanged, this,
                &HostAttention::on_client_availableChanged);
    tavoConnect(&client, &TavoClient::valueChanged, this, &HostAttention::on_client_valueChanged);
    tavoConnect(&client, &TavoClient::nodeChanged, this, &HostAttention::on_client_nodeChanged);
    tavoConnect(&client, &TavoClient::changesDropped, this,
                &HostAttention::on_client_changesDropped);
    tavoConnect(&client, &TavoClient::subscriptionFailed, this,
                &HostAttention::on_client_subscriptionFailed);
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(askBusyHostAgainMs);
    tavoConnect(&m_retryTimer, &QTimer::timeout, this, &HostAttention::on_retryTimer_timeout);
}

void HostAttention::start()
{
    m_client.subscribe(TavoAttentionDoNotDisturbPath(), TavoClient::Change::Node);
    m_client.subscribe(TavoAttentionDoNotDisturbPath(), TavoClient::Change::Value);
    m_client.subscribe(TavoAttentionMissedPath(), TavoClient::Change::Value);
}

void HostAttention::followHistory(bool isFollowed)
{
    if (std::exchange(m_isHistoryFollowed, isFollowed) == isFollowed) {
        return;
    }
    if (isFollowed) {
        m_client.subscribe(TavoAttentionHistoryStatePath(), TavoClient::Change::Value);
    } else {
        m_client.unsubscribe(TavoAttentionHistoryStatePath(), TavoClient::Change::Value);
    }
}

void HostAttention::readPage(const TavoAttentionQuery &query, const PageReceiver &receiver)
{
    m_client.call(TavoAttentionHistoryPath(), TavoValue().setAttentionQuery(query))
        .onFinished(this, [this, query, receiver](const CMReply<QVariant> &reply) {
            const CMError error = reply.error();
            if (TavoClientError::isTooLarge(error) && query.limit() > 1) {
                readPage(TavoAttentionQuery(query).setLimit(query.limit() / 2), receiver);
            } else if (error.isError()) {
                receiver(Failure{error.message().toString()});
            } else {
                receiver(TavoValue(reply.value().toHash()).attentionPage());
            }
        });
}

void HostAttention::markSeen(qint64 first, qint64 last)
{
    m_client.call(
        TavoAttentionMarkSeenPath(),
        TavoValue().setAttentionQuery(TavoAttentionQuery().setFrom(first).setBefore(last + 1)));
}

void HostAttention::setDoNotDisturb(bool isOn)
{
    m_client.call(TavoAttentionSetDoNotDisturbPath(),
                  TavoValue().setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(isOn)));
}

void HostAttention::on_client_availableChanged(bool available)
{
    m_retryTimer.stop();
    if (available) {
        on_client_nodeChanged(TavoAttentionDoNotDisturbPath(), true);
    } else {
        forget();
    }
}

void HostAttention::on_client_nodeChanged(const CMPath &path, bool published)
{
    if (path != TavoAttentionDoNotDisturbPath()) {
        return;
    }
    if (published) {
        read(TavoAttentionDoNotDisturbPath());
        read(TavoAttentionMissedPath());
    } else {
        forget();
    }
}

void HostAttention::on_client_changesDropped(const CMPath &path)
{
    if (path == TavoAttentionDoNotDisturbPath() || path == TavoAttentionMissedPath()) {
        read(path);
    } else if (path == TavoAttentionHistoryStatePath()) {
        Q_EMIT historyChanged();
    }
}

void HostAttention::read(const CMPath &path)
{
    m_client.getValue(path).onFinished(this, [this, path](const CMReply<QVariant> &reply) {
        if (!reply.error().isError()) {
            on_client_valueChanged(path, reply.value());
        } else if (isBusy(reply.error())) {
            readLater();
        }
    });
}

void HostAttention::readLater()
{
    if (m_client.isAvailable() && !m_retryTimer.isActive()) {
        m_retryTimer.start();
    }
}

void HostAttention::on_client_subscriptionFailed(const CMPath & /*path*/, const CMError &error)
{
    if (isBusy(error)) {
        readLater();
    }
}

void HostAttention::on_retryTimer_timeout()
{
    start();
    if (m_isHistoryFollowed) {
        m_client.subscribe(TavoAttentionHistoryStatePath(), TavoClient::Change::Value);
        Q_EMIT historyChanged();
    }
    read(TavoAttentionDoNotDisturbPath());
    read(TavoAttentionMissedPath());
}

void HostAttention::on_client_valueChanged(const CMPath &path, const QVariant &value)
{
    if (path == TavoAttentionDoNotDisturbPath()) {
        m_isLoaded = true;
        m_doNotDisturb = TavoValue(value.toHash()).attentionDoNotDisturb();
    } else if (path == TavoAttentionMissedPath()) {
        m_missedCount = TavoValue(value.toHash()).int_();
    } else if (path == TavoAttentionHistoryStatePath()) {
        Q_EMIT historyChanged();
        return;
    } else {
        return;
    }
    Q_EMIT changed();
}

void HostAttention::forget()
{
    m_isLoaded = false;
    m_doNotDisturb = {};
    m_missedCount = 0;
    Q_EMIT changed();
}
