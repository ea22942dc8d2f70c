// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/export.h"
#include "client/TavoClientError.h"

#include <core/model/cmreply.h>
#include <core/records/cmpath.h>
#include <core/records/value.h>

#include <memory>

#include <QObject>
#include <QStringList>
#include <QVariant>
#include <QVector>

class ClientBus;

/// A node as a listing tells of it.
struct TavoClientNode
{
    CMPath path;
    QString kind; ///< "value", "list", "request", or "group": no node, but there are some below
    QString title;
};

/// The model of a host in another process, over a message bus.
///
/// No request blocks: an answer comes through the reply, a change through a signal, from the event
/// loop of the client's thread, which is the one that made it. Neither does connecting: a bus that
/// leaves the client without a word for 5 seconds is taken for one that is away, and tried again. A
/// host that goes away, or a bus, is waited for: subscriptions and inboxes are made anew when it is
/// back. What changed meanwhile is not reported, so read again on availableChanged(true).
///
/// A request that is made before the bus has been tried waits for that, no longer than the host may
/// take to answer. Later on, one that can't reach a host is answered with an error (see
/// TavoClientError), and each is answered once, at the client's end at the latest. A bus that can
/// start the host does so for a request.
///
/// Not to be deleted from within a callback or a signal of its own: use deleteLater() there.
class TAVO_CLIENT_EXPORT TavoClient : public QObject
{
    Q_OBJECT

public:
    enum class Change { Value, Rows, Node };

    /// "session", "system", or the address of a bus; it is tried from the event loop.
    explicit TavoClient(const QString &bus = QStringLiteral("session"), QObject *parent = nullptr);
    ~TavoClient() override;

    /// Whether a host is on the bus.
    bool isAvailable() const;

    /// Why none is, a sentence for people; empty while one is, and before the bus has been tried.
    QString unavailableReason() const;

    /// The version of the host's module on the bus.
    CMReply<QString> version();

    /// How long later requests wait for a reply; 25 seconds by default.
    void setTimeout(int milliseconds);

    CMReply<QVariant> getValue(const CMPath &path);

    /// Sends a request to the node, and gives its answer.
    CMReply<QVariant> call(const CMPath &path, const QVariant &value = {});
    CMReply<QVariant> call(const CMPath &path, const TavoHash &record);
    CMReply<QVariant> call(const CMPath &path, const QVariantHash &fields);

    /// The rows from first on, count of them; -1: all.
    CMReply<QVariantList> rows(const CMPath &path, int first = 0, int count = -1);

    /// The index of the first row that equals the value; -1 for none.
    CMReply<int> matchRow(const CMPath &path, const QVariant &row);

    /// What is right below the path; every node at and below it, sorted by path.
    CMReply<QVector<TavoClientNode>> list(const CMPath &path = {});
    CMReply<QVector<TavoClientNode>> tree(const CMPath &path = {});

    /// Closes the node as a user interface does; tells whether anybody heard.
    CMReply<bool> close(const CMPath &path);

    // The notifications, with their records.

    /// Queues a sound. How it starts and ends goes to the item's response path: a TavoInbox. One that
    /// loops ends with this client.
    CMReply<QVariant> enqueue(const TavoNotificationPlayerItem &item);
    CMReply<QVariant> cancelSound(const QString &id);

    /// Queues a message; the answer is the path that it is known by.
    CMReply<CMPath> open(const TavoNotificationDisplayItem &item);
    CMReply<QVariant> cancelMessage(const CMPath &path);

    /// Has changes at the path reported by the signal for them, until the client ends. The node may
    /// come later, or never.
    void subscribe(const CMPath &path, Change change);
    void unsubscribe(const CMPath &path, Change change);

Q_SIGNALS:
    /// A host has come or gone; once, too, when it is known for the first time that there is none.
    void availableChanged(bool available);

    void valueChanged(const CMPath &path, const QVariant &value);
    /// As CMSubscribe names the changes; -1 and 0 where they are not about certain rows.
    void rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);
    void nodeChanged(const CMPath &path, bool published);

    /// The host didn't take a subscription: a limit was reached.
    void subscriptionFailed(const CMPath &path, const CMError &error);

private Q_SLOTS:
    void on_bus_availableChanged(bool available);

private:
    friend class TavoInbox;
    friend class TavoMessages;

    using Subscription = QPair<CMPath, Change>;

    void sendSubscription(const char *method, const Subscription &subscription);
    CMReply<QVector<TavoClientNode>> nodes(const char *method, const CMPath &path);

    std::unique_ptr<ClientBus> m_bus;
    QVector<Subscription> m_subscriptions;
};
