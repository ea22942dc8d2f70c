// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/TavoClient.h"

#include "bus/BusVariant.h"
#include "bus/RawMessage.h"
#include "client/ClientBus.h"

#include <core/base/connect.h>

namespace {
ClientBus::Write writePath(const CMPath &path)
{
    return [path](sdbus::MethodCall &call) {
        // The root has a name on the bus, and none as a path.
        BusVariant::appendText(call, path.isEmpty() ? QStringLiteral("/") : path.toString());
    };
}

ClientBus::Write writePathAndValue(const CMPath &path, const QVariant &value)
{
    return [path, value](sdbus::MethodCall &call) {
        writePath(path)(call);
        BusVariant::append(call, value);
    };
}

QVariant readVariant(sdbus::MethodReply &answer)
{
    return BusVariant::read(answer);
}

QVariantList readRows(sdbus::MethodReply &answer)
{
    QVariantList rows;
    answer.enterContainer("v");
    while (sd_bus_message_at_end(rawMessage(answer), 0) == 0) {
        rows.append(BusVariant::read(answer));
    }
    answer.exitContainer();
    return rows;
}

QVector<TavoClientNode> readNodes(sdbus::MethodReply &answer)
{
    std::vector<sdbus::Struct<std::string, std::string, std::string>> read;
    answer >> read;
    QVector<TavoClientNode> nodes;
    nodes.reserve(int(read.size()));
    for (const auto &node : read) {
        nodes.append({CMPath(QString::fromStdString(node.get<0>())),
                      QString::fromStdString(node.get<1>()),
                      QString::fromStdString(node.get<2>())});
    }
    return nodes;
}

const char *textOf(TavoClient::Change change)
{
    switch (change) {
    case TavoClient::Change::Value:
        return "value";
    case TavoClient::Change::Rows:
        return "rows";
    case TavoClient::Change::Node:
        break;
    }
    return "node";
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

void TavoClient::setPatience(int milliseconds)
{
    m_bus->setPatience(milliseconds);
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

CMReply<QString> TavoClient::version()
{
    const auto write = [](sdbus::MethodCall &call) {
        call << std::string(s_modelInterface.name) << std::string("Version");
    };
    return m_bus->ask<QString>(s_propertiesInterface, "Get", write, [](sdbus::MethodReply &answer) {
        return BusVariant::read(answer).toString();
    });
}

CMReply<QVariant> TavoClient::getValue(const CMPath &path)
{
    return m_bus->ask<QVariant>(s_modelInterface, "GetValue", writePath(path), readVariant);
}

CMReply<QVariant> TavoClient::call(const CMPath &path, const QVariant &value)
{
    return m_bus->ask<QVariant>(s_modelInterface, "Call", writePathAndValue(path, value),
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
    const auto write = [path, first, count](sdbus::MethodCall &call) {
        writePath(path)(call);
        call << std::int32_t(first) << std::int32_t(count);
    };
    return m_bus->ask<QVariantList>(s_modelInterface, "GetRows", write, readRows);
}

CMReply<int> TavoClient::matchRow(const CMPath &path, const QVariant &row)
{
    const auto read = [](sdbus::MethodReply &answer) {
        std::int32_t index = -1;
        answer >> index;
        return int(index);
    };
    return m_bus->ask<int>(s_modelInterface, "MatchRow", writePathAndValue(path, row), read);
}

CMReply<QVector<TavoClientNode>> TavoClient::nodes(const char *method, const CMPath &path)
{
    return m_bus->ask<QVector<TavoClientNode>>(s_modelInterface, method, writePath(path),
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

CMReply<bool> TavoClient::close(const CMPath &path)
{
    const auto read = [](sdbus::MethodReply &answer) {
        bool heard = false;
        answer >> heard;
        return heard;
    };
    return m_bus->ask<bool>(s_modelInterface, "Close", writePath(path), read);
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
    const auto read = [](sdbus::MethodReply &answer) {
        return TavoValue(BusVariant::read(answer).toHash()).path();
    };
    return m_bus->ask<CMPath>(s_modelInterface, "Call",
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
    const auto write = [subscription](sdbus::MethodCall &call) {
        writePath(subscription.first)(call);
        call << std::string(textOf(subscription.second));
    };
    const auto finish = [this, subscription](sdbus::MethodReply *, const CMError &error) {
        // One that failed because the host went away is made anew when it is back.
        const bool isRefused = error.isError() && error.name() != CMErrors::noAnswer() &&
                               error.name() != TavoClientError::noHost();
        if (isRefused) {
            m_subscriptions.removeOne(subscription);
            Q_EMIT subscriptionFailed(subscription.first, error);
        }
    };
    m_bus->send(this, s_modelInterface, method, write, finish);
}
