// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelInterface.h"

#include "modules/dbus/clients/Clients.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// In characters. A path of this length can still be kept by the thousand.
constexpr int maxPathLength = 4096;

/// In characters: listings are an overview of many nodes.
constexpr int maxListedTitleLength = 200;

CMPath pathOf(const QString &text)
{
    if (text.size() > maxPathLength) {
        throw BusError::invalidPath("A path has no more than " + std::to_string(maxPathLength) +
                                    " characters");
    }
    CMPath path(text);
    if (path.isEmpty() || path.toString() != text) {
        throw BusError::invalidPath("\"" + text.toStdString() +
                                    "\" is no path: it takes a slash before each name, as in "
                                    "/notifications/display");
    }
    return path;
}

CMPath readPath(BusReader &reader)
{
    return pathOf(reader.readString());
}

CMPath readPath(const BusMessage &call)
{
    BusReader reader(call);
    return readPath(reader);
}

/// The argument of a method that takes "/" for the whole model.
CMPath readPathOrRoot(const BusMessage &call)
{
    const QString text = BusReader(call).readString();
    return text == QLatin1String("/") ? CMPath() : pathOf(text);
}

Subscriptions::Change readChange(BusReader &reader)
{
    const QString change = reader.readString();
    if (change == QLatin1String("value")) {
        return CMAbstractWorker::ValueChange;
    }
    if (change == QLatin1String("rows")) {
        return CMAbstractWorker::RowsChange;
    }
    if (change == QLatin1String("node")) {
        return CMAbstractWorker::NodeChange;
    }
    throw BusError::invalidArguments("A change is one of \"value\", \"rows\" and \"node\"");
}

void writeValue(BusWriter &reply, const QVariant &value)
{
    reply.writeVariant(value);
}

void writeRows(BusWriter &reply, const QVariant &value)
{
    reply.openArray("v");
    for (const QVariant &row : value.toList()) {
        reply.writeVariant(row);
    }
    reply.close();
}

void writeIndex(BusWriter &reply, const QVariant &value)
{
    reply.writeInt32(value.toInt());
}

void writeEntries(BusWriter &reply, const std::vector<CMCatalog::Entry> &entries)
{
    reply.openArray("(sss)");
    for (const CMCatalog::Entry &entry : entries) {
        reply.openStruct("sss");
        reply.writeString(BusWriter::replaceUnsendable(entry.path.toString()));
        reply.writeString(entry.kind);
        reply.writeString(
            BusWriter::replaceUnsendable(entry.title.toString().left(maxListedTitleLength)));
        reply.close();
    }
    reply.close();
}
} // namespace

ModelInterface::ModelInterface(BusConnection &bus, Clients &clients, CMNodes *nodes,
                               ClientSounds &sounds)
    : m_bus(bus)
    , m_clients(clients)
    , m_calls(clients)
    , m_subscriptions(clients)
    , m_inboxes(clients, nodes)
    , m_sounds(sounds)
{
    m_bus.ownName(QString::fromStdString(BusInterface::model().name));
    tavoConnect(&m_bus, &BusConnection::connected, this, &ModelInterface::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &ModelInterface::on_bus_lost);
    tavoConnect(&m_subscriptions, &Subscriptions::valueChanged, this,
                &ModelInterface::on_subscriptions_valueChanged);
    tavoConnect(&m_subscriptions, &Subscriptions::rowsChanged, this,
                &ModelInterface::on_subscriptions_rowsChanged);
    tavoConnect(&m_subscriptions, &Subscriptions::nodeChanged, this,
                &ModelInterface::on_subscriptions_nodeChanged);
    tavoConnect(&m_inboxes, &Inboxes::received, this, &ModelInterface::on_inboxes_received);
}

void ModelInterface::on_bus_connected()
{
    m_object = m_bus.createObject(BusInterface::model());
    add("GetValue", &ModelInterface::getValue);
    add("Call", &ModelInterface::callNode);
    add("List", &ModelInterface::list);
    add("Tree", &ModelInterface::tree);
    add("GetRows", &ModelInterface::getRows);
    add("MatchRow", &ModelInterface::matchRow);
    add("Close", &ModelInterface::closeNode);
    add("Subscribe", &ModelInterface::subscribe);
    add("Unsubscribe", &ModelInterface::unsubscribe);
    add("OpenInbox", &ModelInterface::openInbox);
    add("CloseInbox", &ModelInterface::closeInbox);
    m_object->setConstant("Version", TAVO_VERSION);
    m_object->publish();
}

void ModelInterface::add(const char *method, Handler handler)
{
    const Clients::Handler handle = [this, handler](const BusMessage &call) {
        (this->*handler)(call);
    };
    m_object->setMethod(method,
                        [this, handle](const BusMessage &call) { m_clients.handle(call, handle); });
}

void ModelInterface::on_bus_lost()
{
    m_calls.clear();
    m_object.reset();
}

void ModelInterface::getValue(const BusMessage &call)
{
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> reply;
    CMRoot()->getDataRequest(CMGetDataRequest(readPath(call), reply));
    m_calls.answer(call, reply, writeValue, std::move(charge));
}

void ModelInterface::callNode(const BusMessage &call)
{
    const CMPath path = readPath(call);
    BusReader reader(call, m_clients.limits().valueBytes);
    const QVariant value = reader.readVariant();
    // Before it does anything: a request that is refused has done nothing.
    Quotas::Charge charge = m_calls.charge(call, reader.bytesRead());
    m_calls.answer(call, send(call.sender(), path, value), writeValue, std::move(charge));
}

CMReply<QVariant> ModelInterface::send(const std::string &client, const CMPath &path,
                                       const QVariant &value)
{
    ClientSounds::checkTarget(path);
    if (path == TavoNotificationPlayerEnqueuePath()) {
        return m_sounds.enqueue(client, value);
    }
    if (path == TavoPlayerMainAudioPlayPath()) {
        return m_sounds.playMusic(value);
    }
    return CMRoot()->invoke(path, value, {});
}

void ModelInterface::list(const BusMessage &call)
{
    BusWriter reply(call.createReply(), BusWriter::maxMessageBytes);
    writeEntries(reply, CMCatalog::children(readPathOrRoot(call)));
    m_clients.answer(call, reply.message(), reply.bytesWritten());
}

void ModelInterface::tree(const BusMessage &call)
{
    BusWriter reply(call.createReply(), BusWriter::maxMessageBytes);
    writeEntries(reply, CMCatalog::tree(readPathOrRoot(call)));
    m_clients.answer(call, reply.message(), reply.bytesWritten());
}

void ModelInterface::getRows(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = readPath(reader);
    const std::int32_t first = reader.readInt32();
    const std::int32_t count = reader.readInt32();
    if (first < 0 || count < -1) {
        throw BusError::invalidArguments(
            "Rows are asked for from 0 on, and as many as the count says or, with -1, all");
    }
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, first, count, reply));
    m_calls.answer(call, reply, writeRows, std::move(charge));
}

void ModelInterface::matchRow(const BusMessage &call)
{
    const CMPath path = readPath(call);
    BusReader reader(call, m_clients.limits().valueBytes);
    const QVariant row = reader.readVariant();
    Quotas::Charge charge = m_calls.charge(call, reader.bytesRead());
    const CMReply<QVariant> reply;
    CMRoot()->matchRowRequest(CMMatchRowRequest(path, row, reply));
    m_calls.answer(call, reply, writeIndex, std::move(charge));
}

void ModelInterface::closeNode(const BusMessage &call)
{
    BusWriter reply(call.createReply());
    reply.writeBoolean(CMSubscribe::closeNode(readPath(call)));
    reply.message().send();
}

void ModelInterface::subscribe(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = readPath(reader);
    m_subscriptions.add(call.sender(), readChange(reader), path);
    call.createReply().send();
}

void ModelInterface::unsubscribe(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = readPath(reader);
    if (!m_subscriptions.remove(call.sender(), readChange(reader), path)) {
        throw BusError::invalidArguments("There is no such subscription");
    }
    call.createReply().send();
}

void ModelInterface::openInbox(const BusMessage &call)
{
    BusWriter reply(call.createReply());
    reply.writeString(m_inboxes.open(call.sender()).toString());
    reply.message().send();
}

void ModelInterface::closeInbox(const BusMessage &call)
{
    const CMPath path = readPath(call);
    if (!m_inboxes.close(call.sender(), path)) {
        throw BusError::invalidArguments("The caller has no inbox at " +
                                         path.toString().toStdString());
    }
    call.createReply().send();
}

void ModelInterface::emitTo(const char *signal, const Subscriptions::Names &clients,
                            const std::function<void(BusWriter &)> &write)
{
    if (!m_object) {
        return;
    }
    try {
        for (const std::string &client : clients) {
            BusWriter writer(m_object->createSignal(signal), BusWriter::maxMessageBytes);
            write(writer);
            if (!m_clients.send(client, writer.message(), writer.bytesWritten()) &&
                m_subscriptions.end(client)) {
                LOG4CPLUS_WARN(logger, "The client "
                                           << client
                                           << " doesn't read its signals: its subscriptions end");
            }
        }
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, "A change can't be sent: " << error.what());
    }
}

void ModelInterface::on_subscriptions_valueChanged(const Subscriptions::Names &clients,
                                                   const CMPath &path, const QVariant &value)
{
    emitTo("ValueChanged", clients, [&](BusWriter &signal) {
        signal.writeString(path.toString());
        signal.writeVariant(value);
    });
}

void ModelInterface::on_subscriptions_rowsChanged(const Subscriptions::Names &clients,
                                                  const CMPath &path, const QStringList &changes,
                                                  int first, int count)
{
    emitTo("RowsChanged", clients, [&](BusWriter &signal) {
        signal.writeString(path.toString());
        signal.writeStringList(changes);
        signal.writeInt32(first);
        signal.writeInt32(count);
    });
}

void ModelInterface::on_subscriptions_nodeChanged(const Subscriptions::Names &clients,
                                                  const CMPath &path, bool published)
{
    emitTo("NodeChanged", clients, [&](BusWriter &signal) {
        signal.writeString(path.toString());
        signal.writeBoolean(published);
    });
}

void ModelInterface::on_inboxes_received(const std::string &client, const CMPath &inbox,
                                         const QVariant &value)
{
    emitTo("Received", {client}, [&](BusWriter &signal) {
        signal.writeString(inbox.toString());
        signal.writeVariant(value);
    });
}
