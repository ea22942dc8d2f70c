// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DbusTest.h"
#include "support/bus/BusClient.h"
#include "support/Text.h"

#include <tuple>
#include <vector>

/// A program on the bus that uses org.tavo.Model1 and records the signals that it gets.
class ModelClient : public BusClient
{
public:
    explicit ModelClient(const QString &address)
        : BusClient(address)
    {
        setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
        listen("type='signal',interface='org.tavo.Model1'",
               [this](const BusMessage &signal) { received.push_back(lineOf(signal)); });
    }

    /// A call whose arguments are strings.
    BusCall ask(const std::string &method, const std::vector<QString> &texts = {})
    {
        return call(method, [&](BusWriter &writer) {
            for (const QString &text : texts) {
                writer.writeString(text);
            }
        });
    }
    BusCall getValue(const QString &path) { return ask("GetValue", {path}); }
    BusCall send(const QString &path, const QVariant &value)
    {
        return call("Call", [&](BusWriter &writer) {
            writer.writeString(path);
            writer.writeVariant(value);
        });
    }
    BusCall getRows(const QString &path, int first, int count)
    {
        return call("GetRows", [&](BusWriter &writer) {
            writer.writeString(path);
            writer.writeInt32(first);
            writer.writeInt32(count);
        });
    }
    BusCall preview(const QString &path, int count, int length)
    {
        return call("Preview", [&](BusWriter &writer) {
            writer.writeString(path);
            writer.writeInt32(count);
            writer.writeInt32(length);
        });
    }
    BusCall describe(const QStringList &paths)
    {
        return call("Describe", [&](BusWriter &writer) { writer.writeStringList(paths); });
    }
    BusCall subscribe(const QString &path, const QString &change)
    {
        return ask("Subscribe", {path, change});
    }
    BusCall unsubscribe(const QString &path, const QString &change)
    {
        return ask("Unsubscribe", {path, change});
    }

    /// The signals so far, one line each: name and arguments.
    std::vector<std::string> received;

    bool waitForSignals(std::size_t count) const
    {
        return waitFor([&] { return received.size() >= count; });
    }

private:
    static std::string lineOf(const BusMessage &signal);
};

/// The module on its bus, with a client that uses nodes of the model.
class ModelTest : public DbusTest
{
protected:
    /// For replies and signals as large as a bus takes them.
    static constexpr const char *messageBytes = "messageBytes";
    static QVariantHash withLargeMessages()
    {
        return {{"limits", QVariantHash{{messageBytes, BusWriter::maxMessageBytes}}}};
    }

    explicit ModelTest(const QVariantHash &config = {}, const QString &busSettings = {})
        : DbusTest(busSettings)
    {
        load(config);
        EXPECT_TRUE(isServing());
        client = std::make_unique<ModelClient>(bus().address());
    }

    CMValueNode *publishValue(const QString &path, int value)
    {
        CMValueNode *node = CMValueNode::create(&m_nodes, CMPath(path));
        node->setValue(TavoValue().setInt_(value));
        return node;
    }
    CMListRowsNode *publishRows(const QString &path, const std::vector<QString> &rows)
    {
        CMListRowsNode *node = CMListRowsNode::create(&m_nodes, CMPath(path));
        for (const QString &row : rows) {
            node->rowsAppend(CMPath(row));
        }
        return node;
    }

    /// A node that passes its requests to the function.
    CMActivateNode *publishRequest(const QString &path,
                                   std::function<void(const CMSetDataRequest &)> take)
    {
        CMActivateNode *request = CMActivateNode::create(&m_nodes, CMPath(path));
        request->doSetInvoke([this, take = std::move(take)](CMActivateNode *node) {
            tavoConnect(node, &CMActivateNode::privateInvoke, &m_receiver, take,
                        Qt::QueuedConnection);
        });
        return request;
    }
    /// A node that answers each request with its value.
    void publishEcho(const QString &path)
    {
        publishRequest(path, [](const CMSetDataRequest &request) {
            request.reply().setValue(request.value());
        });
    }

    std::unique_ptr<ModelClient> client;

private:
    QObject m_receiver;
    CMNodes m_nodes;
};
