// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/TavoClient.h"

#include "client/ClientBus.h"
#include "client/TavoClientError.h"
#include <core/base/connect.h>

#include <algorithm>

namespace {
void write(BusWriter &call, const CMPath &path)
{
    // On the bus the root is "/"; as a path it is empty.
    call.writeString(path.isEmpty() ? QStringLiteral("/") : path.toString());
}

ClientBus::Write writePath(const CMPath &path)
{
    return [path](BusWriter &call) { write(call, path); };
}

ClientBus::Write writePathAndValue(const CMPath &path, const QVariant &value)
{
    return [path, value](BusWriter &call) {
        write(call, path);
        call.writeVariant(value);
    };
}

QVariant readVariant(BusReader &reply)
{
    return reply.readVariant();
}

QVariantList readRows(BusReader &reply)
{
    QVariantList rows;
    reply.enterArray("v");
    while (!reply.isAtEnd()) {
        rows.append(reply.readVariant());
    }
    return rows;
}

TavoClientNode readNode(BusReader &reply)
{
    // A braced list is evaluated in its order.
    return {CMPath(reply.readString()), reply.readString(), reply.readString()};
}

QVector<TavoClientNode> readNodes(BusReader &reply)
{
    QVector<TavoClientNode> nodes;
    reply.enterArray("(sss)");
    while (!reply.isAtEnd()) {
        reply.enterStruct("sss");
        nodes.append(readNode(reply));
        reply.leave();
    }
    return nodes;
}

QVector<TavoClientDescription> readDescriptions(BusReader &reply)
{
    QVector<TavoClientDescription> nodes;
    reply.enterArray("(ssss)");
    while (!reply.isAtEnd()) {
        reply.enterStruct("ssss");
        nodes.append({readNode(reply), reply.readString()});
        reply.leave();
    }
    return nodes;
}

QString nameOf(TavoClient::Change change)
{
    switch (change) {
    case TavoClient::Change::Value:
        return QStringLiteral("value");
    case TavoClient::Change::Rows:
        return QStringLiteral("rows");
    case TavoClient::Change::Node:
        break;
    }
    return QStringLiteral("node");
}

/// Finishes the result with two lists in one. The second is requested when the first is there: many large
/// replies at once would be refused.
template <typename List, typename Request>
void join(QObject *context, const CMReply<List> &result, const CMReply<List> &first,
          const Request &requestSecond)
{
    first.onFinished(context, [=](const CMReply<List> &beginning) {
        if (beginning.error().isError()) {
            result.setError(beginning.error());
            return;
        }
        requestSecond().onFinished(context, [=](const CMReply<List> &rest) {
            if (rest.error().isError()) {
                result.setError(rest.error());
            } else {
                result.setValue(beginning.value() + rest.value());
            }
        });
    });
}

/// In the place of a row that no message can hold.
QVariant unreadableRow(const CMError &error)
{
    return QVariantHash{{CMError::Name(), error.name()},
                        {CMError::Message(), error.message().toString()}};
}
} // namespace

TavoClient::TavoClient(const QString &bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::make_unique<ClientBus>(bus))
{
    tavoConnect(m_bus.get(), &ClientBus::availableChanged, this,
                &TavoClient::on_bus_availableChanged);
    tavoConnect(m_bus.get(), &ClientBus::valueChanged, this, &TavoClient::valueChanged);
    tavoConnect(m_bus.get(), &ClientBus::rowsChanged, this, &TavoClient::rowsChanged);
    tavoConnect(m_bus.get(), &ClientBus::nodeChanged, this, &TavoClient::nodeChanged);
    tavoConnect(m_bus.get(), &ClientBus::dropped, this, &TavoClient::on_bus_dropped);
}

TavoClient::~TavoClient() = default;

bool TavoClient::isAvailable() const
{
    return m_bus->isAvailable();
}

QString TavoClient::unavailableReason() const
{
    return m_bus->unavailableReason();
}

void TavoClient::setTimeout(int milliseconds)
{
    m_bus->setTimeout(milliseconds);
}

void TavoClient::on_bus_availableChanged(bool available)
{
    if (available) {
        for (const Subscription &subscription : qAsConst(m_subscriptions)) {
            sendSubscription("Subscribe", subscription);
        }
    }
    Q_EMIT availableChanged(available);
}

void TavoClient::on_bus_dropped(const CMPath &path, uint count)
{
    // The path of an inbox is the inbox's own matter.
    const bool isSubscribed =
        std::any_of(m_subscriptions.cbegin(), m_subscriptions.cend(),
                    [&path](const Subscription &each) { return each.first == path; });
    if (isSubscribed) {
        Q_EMIT changesDropped(path, count);
    }
}

CMReply<QString> TavoClient::version()
{
    const auto write = [](BusWriter &call) {
        call.writeString(QString::fromStdString(BusInterface::model().name));
        call.writeString(QStringLiteral("Version"));
    };
    return m_bus->ask<QString>(ClientBus::properties(), "Get", write,
                               [](BusReader &reply) { return reply.readVariant().toString(); });
}

CMReply<QVariant> TavoClient::getValue(const CMPath &path)
{
    return m_bus->ask<QVariant>(BusInterface::model(), "GetValue", writePath(path), readVariant);
}

CMReply<QVariant> TavoClient::call(const CMPath &path, const QVariant &value)
{
    return m_bus->ask<QVariant>(BusInterface::model(), "Call", writePathAndValue(path, value),
                                readVariant);
}

CMReply<QVariant> TavoClient::call(const CMPath &path, const TavoHash &record)
{
    return call(path, record.__variant());
}

CMReply<QVariant> TavoClient::call(const CMPath &path, const QVariantHash &fields)
{
    return call(path, QVariant(fields));
}

CMReply<QVariantList> TavoClient::rows(const CMPath &path, int first, int count)
{
    const auto writeAll = [path, first, count](BusWriter &call) {
        write(call, path);
        call.writeInt32(first);
        call.writeInt32(count);
    };
    CMReply<QVariantList> result;
    m_bus->ask<QVariantList>(BusInterface::model(), "GetRows", writeAll, readRows)
        .onFinished(this, [=](const CMReply<QVariantList> &reply) {
            const CMError error = reply.error();
            const bool isTooLarge = TavoClientError::isTooLarge(error);
            if (!error.isError()) {
                result.setValue(reply.value());
            } else if (isTooLarge && count != 0 && count != 1) {
                constexpr int partOfAll = 1000;
                const int part = count < 0 ? partOfAll : count / 2;
                join(this, result, rows(path, first, part),
                     [=] { return rows(path, first + part, count < 0 ? count : count - part); });
            } else if (isTooLarge && count == 1 &&
                       error.name() != TavoClientError::limitExceeded()) {
                result.setValue(QVariantList{unreadableRow(error)});
            } else {
                result.setError(error); // of a limit, too: there may be no such row
            }
        });
    return result;
}

CMReply<TavoClientPreview> TavoClient::preview(const CMPath &path, int count, int length)
{
    const auto writeAll = [path, count, length](BusWriter &call) {
        write(call, path);
        call.writeInt32(count);
        call.writeInt32(length);
    };
    const auto read = [](BusReader &reply) {
        // A braced list is evaluated in its order.
        return TavoClientPreview{reply.readString(), readRows(reply)};
    };
    return m_bus->ask<TavoClientPreview>(BusInterface::model(), "Preview", writeAll, read);
}

CMReply<int> TavoClient::matchRow(const CMPath &path, const QVariant &row)
{
    const auto read = [](BusReader &reply) { return int(reply.readInt32()); };
    return m_bus->ask<int>(BusInterface::model(), "MatchRow", writePathAndValue(path, row), read);
}

CMReply<QVector<TavoClientNode>> TavoClient::nodes(const char *method, const CMPath &path)
{
    return m_bus->ask<QVector<TavoClientNode>>(BusInterface::model(), method, writePath(path),
                                               readNodes);
}

CMReply<QVector<TavoClientNode>> TavoClient::list(const CMPath &path)
{
    return nodes("List", path);
}

CMReply<QVector<TavoClientNode>> TavoClient::tree(const CMPath &path)
{
    return nodes("Tree", path);
}

CMReply<QVector<TavoClientDescription>> TavoClient::describe(const QVector<CMPath> &paths)
{
    const auto writePaths = [paths](BusWriter &call) {
        call.openArray("s");
        for (const CMPath &path : paths) {
            write(call, path);
        }
        call.close();
    };
    using Nodes = QVector<TavoClientDescription>;
    CMReply<Nodes> result;
    // A bus may end the connection of who sends a call of megabytes.
    constexpr int maxAtOnce = 200;
    if (paths.size() > maxAtOnce) {
        join(this, result, describe(paths.mid(0, maxAtOnce)),
             [=] { return describe(paths.mid(maxAtOnce)); });
        return result;
    }
    m_bus->ask<Nodes>(BusInterface::model(), "Describe", writePaths, readDescriptions)
        .onFinished(this, [=](const CMReply<Nodes> &reply) {
            const CMError error = reply.error();
            if (!error.isError()) {
                result.setValue(reply.value());
            } else if (!TavoClientError::isTooLarge(error) || paths.isEmpty() ||
                       (paths.size() == 1 && error.name() == TavoClientError::limitExceeded())) {
                result.setError(error);
            } else if (paths.size() == 1) {
                TavoClientDescription node;
                node.path = paths.first();
                result.setValue(Nodes{node});
            } else {
                const int half = paths.size() / 2;
                join(this, result, describe(paths.mid(0, half)),
                     [=] { return describe(paths.mid(half)); });
            }
        });
    return result;
}

CMReply<bool> TavoClient::close(const CMPath &path)
{
    const auto read = [](BusReader &reply) { return reply.readBoolean(); };
    return m_bus->ask<bool>(BusInterface::model(), "Close", writePath(path), read);
}

CMReply<QVariant> TavoClient::enqueue(const TavoNotificationPlayerItem &item)
{
    return call(TavoNotificationPlayerEnqueuePath(), TavoValue().setNotificationPlayerItem(item));
}

CMReply<QVariant> TavoClient::cancelSound(const QString &id)
{
    return call(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id));
}

CMReply<CMPath> TavoClient::open(const TavoNotificationDisplayItem &item)
{
    const QVariant value = TavoValue().setNotificationDisplayItem(item).__variant();
    const auto read = [](BusReader &reply) {
        return TavoValue(reply.readVariant().toHash()).path();
    };
    return m_bus->ask<CMPath>(BusInterface::model(), "Call",
                              writePathAndValue(TavoNotificationDisplayOpenPath(), value), read);
}

CMReply<QVariant> TavoClient::cancelMessage(const CMPath &path)
{
    return call(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path));
}

void TavoClient::subscribe(const CMPath &path, Change change)
{
    const Subscription subscription(path, change);
    if (m_subscriptions.contains(subscription)) {
        return;
    }
    m_subscriptions.append(subscription);
    if (isAvailable()) {
        sendSubscription("Subscribe", subscription);
    }
}

void TavoClient::unsubscribe(const CMPath &path, Change change)
{
    const Subscription subscription(path, change);
    if (m_subscriptions.removeOne(subscription) && isAvailable()) {
        sendSubscription("Unsubscribe", subscription);
    }
}

void TavoClient::sendSubscription(const char *method, const Subscription &subscription)
{
    const auto writeAll = [subscription](BusWriter &call) {
        write(call, subscription.first);
        call.writeString(nameOf(subscription.second));
    };
    const auto finish = [this, subscription](const Result<BusMessage, CMError> &reply) {
        const auto *error = std::get_if<CMError>(&reply);
        // Subscriptions that failed because the host went away are made anew when it is back.
        const bool isRefused = error != nullptr && error->name() != CMErrors::noAnswer() &&
                               error->name() != TavoClientError::noHost();
        if (isRefused) {
            m_subscriptions.removeOne(subscription);
            Q_EMIT subscriptionFailed(subscription.first, *error);
        }
    };
    m_bus->send(this, BusInterface::model(), method, writeAll, finish);
}
