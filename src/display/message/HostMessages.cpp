// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/message/HostMessages.h"

#include "display/message/MessageRows.h"
#include "display/text/ShownText.h"
#include <client/BusyHost.h>
#include <core/base/connect.h>
#include <core/records/value.h>

#include <algorithm>

namespace {
CMPath currentPath()
{
    return TavoNotificationDisplayCurrentPath();
}

/// Whether a text may go on.
bool isCut(const QVariantList &rows)
{
    return std::any_of(rows.begin(), rows.end(), [](const QVariant &value) {
        const TavoRoles row(value.toHash());
        return std::max(row.title().toString().size(), row.markup().size()) >=
               HostMessages::firstReadLength;
    });
}
} // namespace

HostMessages::HostMessages(TavoClient &client, QObject *parent)
    : MessageSource(parent)
    , m_client(client)
{
    m_readTimer.setSingleShot(true);
    m_readTimer.setTimerType(Qt::PreciseTimer);
    m_readTimer.setInterval(minReadIntervalMs);
    tavoConnect(&m_readTimer, &QTimer::timeout, this, &HostMessages::on_readTimer_timeout);
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(askBusyHostAgainMs);
    tavoConnect(&m_retryTimer, &QTimer::timeout, this, &HostMessages::on_retryTimer_timeout);
    tavoConnect(&client, &TavoClient::availableChanged, this,
                &HostMessages::on_client_availableChanged);
    tavoConnect(&client, &TavoClient::valueChanged, this, &HostMessages::on_client_valueChanged);
    tavoConnect(&client, &TavoClient::rowsChanged, this, &HostMessages::on_client_rowsChanged);
    tavoConnect(&client, &TavoClient::nodeChanged, this, &HostMessages::on_client_nodeChanged);
    tavoConnect(&client, &TavoClient::changesDropped, this,
                &HostMessages::on_client_changesDropped);
    tavoConnect(&client, &TavoClient::subscriptionFailed, this,
                &HostMessages::on_client_subscriptionFailed);
}

void HostMessages::start()
{
    m_client.subscribe(currentPath(), TavoClient::Change::Value);
    m_client.subscribe(currentPath(), TavoClient::Change::Node);
}

void HostMessages::close(const CMPath &path)
{
    m_client.close(path);
}

void HostMessages::activate(const CMPath &action)
{
    m_client.call(action, QVariant(QString()));
}

void HostMessages::on_client_availableChanged(bool available)
{
    m_retryTimer.stop();
    if (available) {
        readCurrent();
    } else {
        setHead({});
    }
}

void HostMessages::readCurrent()
{
    start(); // A subscription may have been refused.
    m_client.getValue(currentPath()).onFinished(this, [this](const CMReply<QVariant> &reply) {
        if (!reply.error().isError()) {
            on_client_valueChanged(currentPath(), reply.value());
        } else if (reply.error().name() != CMErrors::noSuchNode()) {
            readLater();
        }
    });
}

void HostMessages::readLater()
{
    if (m_client.isAvailable() && !m_retryTimer.isActive()) {
        m_retryTimer.start();
    }
}

void HostMessages::on_retryTimer_timeout()
{
    readCurrent();
    if (!m_head.path.isEmpty()) {
        readMessage();
    }
}

void HostMessages::on_client_valueChanged(const CMPath &path, const QVariant &value)
{
    if (path != currentPath()) {
        return;
    }
    const TavoNotificationDisplayCurrent current = TavoValue(value.toHash()).displayCurrent();
    Head head;
    head.path = current.path();
    head.priority = current.priority();
    head.since = current.since();
    head.remaining = current.remaining();
    head.waitingCount = current.waiting();
    setHead(head);
}

void HostMessages::on_client_nodeChanged(const CMPath &path, bool published)
{
    if (path != currentPath()) {
        return;
    }
    if (published) {
        readCurrent();
    } else {
        setHead({});
    }
}

void HostMessages::on_client_changesDropped(const CMPath &path)
{
    if (path == currentPath()) {
        readCurrent();
    } else {
        on_client_rowsChanged(path);
    }
}

void HostMessages::on_client_subscriptionFailed(const CMPath &path, const CMError &error)
{
    if (isBusy(error)) {
        if (path == m_followed) {
            m_followed = {};
        }
        readLater();
        return;
    }
    qWarning("The host reports no changes of %s: %s", qUtf8Printable(path.toString()),
             qUtf8Printable(error.message().toString()));
}

void HostMessages::setHead(const Head &head)
{
    const bool isSame = head.isSameAs(m_head);
    m_head = head;
    if (head.path.isEmpty()) {
        follow({});
        m_isReadDue = false;
        if (!m_shownHead.path.isEmpty() || m_isExpected) {
            m_shownHead = {};
            m_shownMessage = {};
            m_isExpected = false;
            Q_EMIT emptied();
        }
    } else if (!isSame) {
        readMessage();
    } else if (m_shownHead.isSameAs(head)) {
        Q_EMIT waitingChanged(head.waitingCount);
    }
}

void HostMessages::on_client_rowsChanged(const CMPath &path)
{
    if (path == m_head.path) {
        readMessage();
    }
}

void HostMessages::follow(const CMPath &path)
{
    if (path == m_followed) {
        return;
    }
    if (!m_followed.isEmpty()) {
        m_client.unsubscribe(m_followed, TavoClient::Change::Rows);
    }
    m_followed = path;
    if (!path.isEmpty()) {
        m_client.subscribe(path, TavoClient::Change::Rows);
    }
}

void HostMessages::readMessage()
{
    m_isReadDue = m_isReading || m_readTimer.isActive();
    if (m_isReadDue) {
        return;
    }
    m_isReading = true;
    const CMPath path = m_head.path;
    const bool isFirst = !m_head.isSameAs(m_shownHead);
    if (!isFirst) {
        follow(path);
    }
    m_client.preview(path, maxMessageRows, (isFirst ? firstReadLength : maxReadLength) + 1)
        .onFinished(this, [this, path, isFirst](const CMReply<TavoClientPreview> &preview) {
            // A message that has just ended says what it said before, until something else is on display.
            if (isBusy(preview.error())) {
                readLater();
            }
            const bool isLost = preview.error().isError() && !isFirst;
            Message message =
                isLost ? m_shownMessage
                       : messageFromRows(path, preview.value().title, preview.value().rows);
            message.isWhole = !isFirst || !isCut(preview.value().rows);
            on_message_read(path, message);
        });
    if (m_shownHead.path.isEmpty() && !m_isExpected) {
        m_isExpected = true;
        Q_EMIT expected();
    }
}

void HostMessages::on_message_read(const CMPath &path, const Message &message)
{
    m_isReading = false;
    m_readTimer.start();
    if (path != m_head.path) {
        m_isReadDue = !m_head.path.isEmpty();
        return;
    }
    if (!m_head.isSameAs(m_shownHead)) {
        m_isReadDue = true;
        m_isExpected = false;
        m_shownHead = m_head;
        m_shownMessage = message;
        Q_EMIT shown(m_head, message);
    } else if (!(message == m_shownMessage)) {
        m_shownMessage = message;
        Q_EMIT messageChanged(message);
    }
}

void HostMessages::on_readTimer_timeout()
{
    if (m_isReadDue) {
        readMessage();
    }
}
