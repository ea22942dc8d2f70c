// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelInterface.h"

#include "modules/dbus/clients/Clients.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusVariant.h>
#include <bus/BusVariantReader.h>
#include <bus/BusVariantWriter.h>
#include <bus/RawMessage.h>

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

constexpr const char *interfaceName = "org.tavo.Model1";
constexpr const char *objectPath = "/org/tavo/Model1";

/// Longer than any that means something, and short enough to keep by the thousand.
constexpr int longestPath = 4096;

/// Of a title in a listing, which is to be an overview of many.
constexpr int longestListedTitle = 200;

CMPath readPath(sdbus::MethodCall &call)
{
    const QString text = BusVariant::readText(call);
    if (text.size() > longestPath) {
        throw BusErrors::invalidPath("A path has no more than " + std::to_string(longestPath) +
                                     " characters");
    }
    CMPath path(text);
    if (path.isEmpty() || path.toString() != text) {
        throw BusErrors::invalidPath("\"" + text.toStdString() +
                                     "\" is no path: it takes a slash before each name, as in "
                                     "/notifications/display");
    }
    return path;
}

/// Of a method that takes "/" for the whole model.
CMPath readPathOrRoot(sdbus::MethodCall &call)
{
    char *text = nullptr;
    call >> text;
    if (std::string(text) == "/") {
        return {};
    }
    call.rewind(true);
    return readPath(call);
}

Subscriptions::Change readChange(sdbus::MethodCall &call)
{
    const QString change = BusVariant::readText(call);
    if (change == QLatin1String("value")) {
        return CMAbstractWorker::ValueChange;
    }
    if (change == QLatin1String("rows")) {
        return CMAbstractWorker::RowsChange;
    }
    if (change == QLatin1String("node")) {
        return CMAbstractWorker::NodeChange;
    }
    throw BusErrors::invalidArguments("A change is one of \"value\", \"rows\" and \"node\"");
}

/// Each of these says about how many bytes it has appended.
std::size_t appendVariant(sdbus::Message &message, const QVariant &value)
{
    BusVariantWriter writer(rawMessage(message), BusVariant::mostMessageBytes);
    writer.append(value, 0);
    return writer.bytesWritten();
}

std::size_t appendValue(sdbus::MethodReply &answer, const QVariant &value)
{
    return appendVariant(answer, value);
}

std::size_t appendRows(sdbus::MethodReply &answer, const QVariant &value)
{
    // The rows stand in an array.
    constexpr int depth = 1;
    const QVariantList rows = value.toList();
    BusVariantWriter writer(rawMessage(answer), BusVariant::mostMessageBytes);
    answer.openContainer("v");
    for (const QVariant &row : rows) {
        writer.append(row, depth);
    }
    answer.closeContainer();
    return writer.bytesWritten();
}

std::size_t appendIndex(sdbus::MethodReply &answer, const QVariant &value)
{
    answer << std::int32_t(value.toInt());
    return sizeof(std::int32_t);
}

std::size_t appendEntries(sdbus::MethodReply &answer, const std::vector<CMCatalog::Entry> &entries)
{
    BusVariantWriter writer(rawMessage(answer), BusVariant::mostMessageBytes);
    answer.openContainer("(sss)");
    for (const CMCatalog::Entry &entry : entries) {
        answer.openStruct("sss");
        writer.appendText(BusVariant::shownText(entry.path.toString()));
        writer.appendText(entry.kind);
        writer.appendText(BusVariant::shownText(entry.title.toString().left(longestListedTitle)));
        answer.closeStruct();
    }
    answer.closeContainer();
    return writer.bytesWritten();
}

/// The same for a signal's path.
std::size_t appendPath(sdbus::Signal &message, const CMPath &path)
{
    const QString text = path.toString();
    BusVariant::appendText(message, text);
    return std::size_t(text.size());
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
    m_bus.ownName(QString::fromLatin1(interfaceName));
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
    m_object = m_bus.createObject(objectPath, interfaceName);
    add("GetValue", &ModelInterface::getValue, "s", {"path"}, "v", {"value"});
    add("Call", &ModelInterface::callNode, "sv", {"path", "value"}, "v", {"answer"});
    add("List", &ModelInterface::list, "s", {"path"}, "a(sss)", {"nodes"});
    add("Tree", &ModelInterface::tree, "s", {"path"}, "a(sss)", {"nodes"});
    add("GetRows", &ModelInterface::getRows, "sii", {"path", "first", "count"}, "av", {"rows"});
    add("MatchRow", &ModelInterface::matchRow, "sv", {"path", "row"}, "i", {"index"});
    add("Close", &ModelInterface::closeNode, "s", {"path"}, "b", {"heard"});
    add("Subscribe", &ModelInterface::subscribe, "ss", {"path", "change"}, "", {});
    add("Unsubscribe", &ModelInterface::unsubscribe, "ss", {"path", "change"}, "", {});
    add("OpenInbox", &ModelInterface::openInbox, "", {}, "s", {"path"});
    add("CloseInbox", &ModelInterface::closeInbox, "s", {"path"}, "", {});
    addSignal("ValueChanged", "sv", {"path", "value"});
    addSignal("RowsChanged", "sasii", {"path", "changes", "first", "count"});
    addSignal("NodeChanged", "sb", {"path", "published"});
    addSignal("Received", "sv", {"inbox", "value"});
    m_object->addConstant("Version", TAVO_VERSION);
    m_object->publish();
}

void ModelInterface::add(const char *method, Handler handler, const char *in, const Texts &inNames,
                         const char *out, const Texts &outNames)
{
    const Clients::Handler handle = [this, handler](sdbus::MethodCall &call) {
        (this->*handler)(call);
    };
    m_object->addMethod(
        method, in, inNames, out, outNames,
        [this, handle](sdbus::MethodCall &call) { m_clients.handle(call, handle); });
}

void ModelInterface::addSignal(const char *name, const char *signature, const Texts &names)
{
    m_object->addSignal(name, signature, names);
}

void ModelInterface::on_bus_lost()
{
    m_calls.clear();
    m_object.reset();
}

void ModelInterface::getValue(sdbus::MethodCall &call)
{
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> reply;
    CMRoot()->getDataRequest(CMGetDataRequest(readPath(call), reply));
    m_calls.answer(call, reply, appendValue, std::move(charge));
}

void ModelInterface::callNode(sdbus::MethodCall &call)
{
    const CMPath path = readPath(call);
    BusVariantReader reader(rawMessage(call), m_clients.limits().valueBytes);
    const QVariant value = reader.read();
    // Before it does anything: a request that is refused has done nothing.
    Quotas::Charge charge = m_calls.charge(call, reader.bytesRead());
    m_calls.answer(call, send(call.getSender(), path, value), appendValue, std::move(charge));
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

void ModelInterface::list(sdbus::MethodCall &call)
{
    sdbus::MethodReply answer = call.createReply();
    const std::size_t bytes = appendEntries(answer, CMCatalog::children(readPathOrRoot(call)));
    m_clients.answer(call, answer, bytes);
}

void ModelInterface::tree(sdbus::MethodCall &call)
{
    sdbus::MethodReply answer = call.createReply();
    const std::size_t bytes = appendEntries(answer, CMCatalog::tree(readPathOrRoot(call)));
    m_clients.answer(call, answer, bytes);
}

void ModelInterface::getRows(sdbus::MethodCall &call)
{
    const CMPath path = readPath(call);
    std::int32_t first = 0;
    std::int32_t count = 0;
    call >> first >> count;
    if (first < 0 || count < -1) {
        throw BusErrors::invalidArguments(
            "Rows are asked for from 0 on, and as many as the count says or, with -1, all");
    }
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, first, count, reply));
    m_calls.answer(call, reply, appendRows, std::move(charge));
}

void ModelInterface::matchRow(sdbus::MethodCall &call)
{
    const CMPath path = readPath(call);
    BusVariantReader reader(rawMessage(call), m_clients.limits().valueBytes);
    const QVariant row = reader.read();
    Quotas::Charge charge = m_calls.charge(call, reader.bytesRead());
    const CMReply<QVariant> reply;
    CMRoot()->matchRowRequest(CMMatchRowRequest(path, row, reply));
    m_calls.answer(call, reply, appendIndex, std::move(charge));
}

void ModelInterface::closeNode(sdbus::MethodCall &call)
{
    sdbus::MethodReply answer = call.createReply();
    answer << CMSubscribe::closeNode(readPath(call));
    answer.send();
}

void ModelInterface::subscribe(sdbus::MethodCall &call)
{
    const CMPath path = readPath(call);
    m_subscriptions.add(call.getSender(), readChange(call), path);
    call.createReply().send();
}

void ModelInterface::unsubscribe(sdbus::MethodCall &call)
{
    const CMPath path = readPath(call);
    if (!m_subscriptions.remove(call.getSender(), readChange(call), path)) {
        throw BusErrors::invalidArguments("There is no such subscription");
    }
    call.createReply().send();
}

void ModelInterface::openInbox(sdbus::MethodCall &call)
{
    sdbus::MethodReply answer = call.createReply();
    BusVariant::appendText(answer, m_inboxes.open(call.getSender()).toString());
    answer.send();
}

void ModelInterface::closeInbox(sdbus::MethodCall &call)
{
    const CMPath path = readPath(call);
    if (!m_inboxes.close(call.getSender(), path)) {
        throw BusErrors::invalidArguments("The caller has no inbox at " +
                                          path.toString().toStdString());
    }
    call.createReply().send();
}

template <typename Append>
void ModelInterface::emitTo(const char *signal, const Subscriptions::Names &clients, Append append)
{
    if (!m_object) {
        return;
    }
    try {
        for (const std::string &client : clients) {
            sdbus::Signal message = m_object->createSignal(signal);
            const std::size_t bytes = append(message);
            if (!m_clients.send(client, message, bytes) && m_subscriptions.end(client)) {
                LOG4CPLUS_WARN(logger, "The client "
                                           << client
                                           << " doesn't read its signals: its subscriptions end");
            }
        }
    } catch (const sdbus::Error &error) {
        LOG4CPLUS_WARN(logger, "A change can't be sent: " << error.what());
    }
}

void ModelInterface::on_subscriptions_valueChanged(const Subscriptions::Names &clients,
                                                   const CMPath &path, const QVariant &value)
{
    emitTo("ValueChanged", clients, [&](sdbus::Signal &message) {
        const std::size_t bytes = appendPath(message, path);
        return bytes + appendVariant(message, value);
    });
}

void ModelInterface::on_subscriptions_rowsChanged(const Subscriptions::Names &clients,
                                                  const CMPath &path, const QStringList &changes,
                                                  int first, int count)
{
    emitTo("RowsChanged", clients, [&](sdbus::Signal &message) {
        const std::size_t bytes = appendPath(message, path);
        BusVariantWriter writer(rawMessage(message), BusVariant::mostMessageBytes);
        message.openContainer("s");
        for (const QString &change : changes) {
            writer.appendText(change);
        }
        message.closeContainer();
        message << std::int32_t(first) << std::int32_t(count);
        return bytes + writer.bytesWritten();
    });
}

void ModelInterface::on_subscriptions_nodeChanged(const Subscriptions::Names &clients,
                                                  const CMPath &path, bool published)
{
    emitTo("NodeChanged", clients, [&](sdbus::Signal &message) {
        const std::size_t bytes = appendPath(message, path);
        message << published;
        return bytes;
    });
}

void ModelInterface::on_inboxes_received(const std::string &client, const CMPath &inbox,
                                         const QVariant &value)
{
    emitTo("Received", {client}, [&](sdbus::Signal &message) {
        const std::size_t bytes = appendPath(message, inbox);
        return bytes + appendVariant(message, value);
    });
}
