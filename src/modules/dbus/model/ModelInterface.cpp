// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelInterface.h"

#include "ModelArguments.h"
#include "modules/dbus/clients/Clients.h"
#include "modules/dbus/clients/Refusals.h"
#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>
#include <bus/SendableText.h>

#include <utility>
#include <vector>

namespace {
/// In characters. A listing is an overview of many nodes.
constexpr int maxListedTitleLength = 200;

void writeValue(BusWriter &reply, const QVariant &value)
{
    reply.writeVariant(value);
}

void writeRows(BusWriter &reply, const QVariant &value)
{
    const QVariantList rows = value.toList();
    reply.openArray("v");
    for (const QVariant &row : rows) {
        reply.writeVariant(row);
    }
    reply.close();
}

void writeIndex(BusWriter &reply, const QVariant &value)
{
    reply.writeInt32(value.toInt());
}

void writeTitle(BusWriter &reply, const TrString &title)
{
    reply.writeString(sendableText(title.toString().left(maxListedTitleLength)));
}

void writeEntry(BusWriter &reply, const CMCatalog::Entry &entry)
{
    reply.writeString(sendableText(entry.path.toString()));
    reply.writeString(entry.kind);
    writeTitle(reply, entry.title);
}

void writeEntries(BusWriter &reply, const std::vector<CMCatalog::Entry> &entries)
{
    reply.openArray("(sss)");
    for (const CMCatalog::Entry &entry : entries) {
        reply.openStruct("sss");
        writeEntry(reply, entry);
        reply.close();
    }
    reply.close();
}

/// Whether the nodes at and below the path are certainly more than fit into a message of this size. Only the
/// first of them are counted: there may be a hundred thousand, and listing them all takes long.
bool areTooMany(const CMPath &path, int maxMessageBytes)
{
    constexpr std::size_t minEntryBytes = 36;
    const std::size_t max = std::size_t(maxMessageBytes) / minEntryBytes;
    std::size_t count = 0;
    std::vector<CMPath> left{path};
    while (!left.empty()) {
        const CMPath parent = left.back();
        left.pop_back();
        for (const CMCatalog::Entry &entry : CMCatalog::children(parent)) {
            count += entry.kind == CMCatalog::groupKind() ? 0 : 1;
            left.push_back(entry.path);
        }
        if (count > max) {
            return true;
        }
    }
    return false;
}

/// The title of the node's first row. Nodes reply to requests for rows at once.
QString textOf(const CMPath &path)
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, 1, reply));
    return TavoRoles(reply.value().toList().value(0).toHash()).title().toString();
}
} // namespace

ModelInterface::ModelInterface(BusConnection &bus, Clients &clients, CMNodes *nodes,
                               ClientSounds &sounds, ClientInhibitions &inhibitions)
    : m_bus(bus)
    , m_clients(clients)
    , m_calls(clients)
    , m_attention(clients, sounds)
    , m_messages(clients, nodes)
    , m_subscriptions(clients)
    , m_inboxes(clients, nodes)
    , m_signals(clients, m_subscriptions, m_inboxes)
    , m_services(clients, m_inboxes)
    , m_sounds(sounds)
    , m_inhibitions(inhibitions)
{
    m_bus.ownName(QString::fromStdString(BusInterface::model().name));
    tavoConnect(&m_bus, &BusConnection::connected, this, &ModelInterface::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &ModelInterface::on_bus_lost);
}

void ModelInterface::on_bus_connected()
{
    m_object = m_bus.createObject(BusInterface::model());
    const auto serve = [this](const char *method, auto handler,
                              CallTurns::Effect effect = CallTurns::Effect::Reply) {
        m_clients.serve(*m_object, method, this, handler, effect);
    };
    serve("GetValue", &ModelInterface::getValue);
    serve("Call", &ModelInterface::callNode, CallTurns::Effect::Lasting);
    serve("List", &ModelInterface::list);
    serve("Tree", &ModelInterface::tree);
    serve("Describe", &ModelInterface::describe);
    serve("GetRows", &ModelInterface::getRows);
    serve("Preview", &ModelInterface::preview);
    serve("MatchRow", &ModelInterface::matchRow);
    serve("Close", &ModelInterface::closeNode, CallTurns::Effect::Lasting);
    serve("Subscribe", &ModelInterface::subscribe, CallTurns::Effect::OfClient);
    serve("Unsubscribe", &ModelInterface::unsubscribe, CallTurns::Effect::OfClient);
    serve("OpenInbox", &ModelInterface::openInbox, CallTurns::Effect::OfClient);
    serve("CloseInbox", &ModelInterface::closeInbox, CallTurns::Effect::OfClient);
    m_object->setConstant("Version", TAVO_VERSION);
    m_clients.publish(*m_object);
    m_signals.setObject(m_object.get());
}

void ModelInterface::on_bus_lost()
{
    m_calls.clear();
    m_signals.setObject(nullptr);
    m_object.reset();
}

void ModelInterface::getValue(const BusMessage &call)
{
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> reply;
    CMRoot()->getDataRequest(CMGetDataRequest(ModelArguments::readPath(call), reply));
    m_calls.answer(call, reply, writeValue, std::move(charge));
}

void ModelInterface::callNode(const BusMessage &call)
{
    const CMPath path = ModelArguments::readPath(call);
    BusReader reader(call, m_clients.limits().valueBytes);
    const QVariant value = reader.readVariant();
    // Must come first, because a refused request must not have done anything.
    Quotas::Charge charge = m_calls.charge(call, reader.bytesRead());
    if (m_inboxes.has(path) && reader.bytesRead() <= std::size_t(m_clients.limits().messageBytes)) {
        // What can't be sent on must be refused here: its receiver would be told that something was left out.
        BusWriter trial(call.createReply(), m_clients.limits().messageBytes);
        trial.writeString(path.toString());
        trial.writeVariant(value);
    }
    const CMReply<QVariant> reply = send(call.sender(), path, value, reader.bytesRead());
    // Pages of the history wait for each other.
    if (path.isBelow(TavoAttentionPath()) && path != TavoAttentionHistoryPath()) {
        m_clients.addAttentionLoad(charge.user(), reply);
    }
    // To pause and resume what plays can take the player a tenth of a second for each sound.
    constexpr ModuleLoad::Time soundTakes = std::chrono::milliseconds(10);
    const bool isSound = path == TavoNotificationPlayerEnqueuePath();
    m_calls.answer(call, reply, writeValue, std::move(charge),
                   isSound ? soundTakes : ModuleLoad::usual);
}

void ModelInterface::checkItem(const std::string &client, const QVariant &value) const
{
    ModelArguments::checkTexts(value);
    const TavoValue request(value.toHash());
    m_inboxes.checkReceiver(client, request.notificationPlayerItem().playbackResponsePath());
    m_inboxes.checkReceiver(client, request.attentionItem().sound().playbackResponsePath());
}

CMReply<QVariant> ModelInterface::send(const std::string &client, const CMPath &path,
                                       const QVariant &value, std::size_t bytes)
{
    ClientSounds::checkTarget(path);
    if (m_inboxes.has(path) && bytes > std::size_t(m_clients.limits().messageBytes)) {
        throw Refusals::tooLongForAnInbox(m_clients.limits().messageBytes);
    }
    m_inboxes.admit(client, path, bytes);
    if (path == TavoNotificationPlayerEnqueuePath()) {
        checkItem(client, value);
        return m_sounds.enqueue(client, value, bytes);
    }
    if (path == TavoNotificationPlayerCancelPath()) {
        return m_sounds.cancel(client, value);
    }
    if (path == TavoNotificationDisplayOpenPath()) {
        checkItem(client, value);
        return m_messages.open(client, value, bytes);
    }
    if (path == TavoAttentionNotifyPath()) {
        checkItem(client, value);
        return m_attention.notify(client, value, bytes);
    }
    if (path == TavoAttentionReplacePath()) {
        checkItem(client, value);
        return m_attention.replace(client, value, bytes);
    }
    if (path == TavoAttentionClosePath()) {
        return ClientAttention::close(value);
    }
    if (path == TavoAttentionHistoryPath()) {
        return m_attention.readHistory(client, value);
    }
    if (path == TavoAttentionInhibitPath()) {
        return m_inhibitions.send(client, TavoValue(value.toHash()).attentionInhibition(), bytes);
    }
    if (path == TavoAttentionSoundPath()) {
        throw Refusals::soundWithoutNotification();
    }
    if (path == TavoPlayerMainAudioPlayPath()) {
        return m_sounds.playMusic(client, value);
    }
    if (path == TavoNotificationDisplayCancelNotifyPath()) {
        return cancelMessage(value);
    }
    return m_services.send(client, path, value);
}

CMReply<QVariant> ModelInterface::cancelMessage(const QVariant &value)
{
    // A record with the message's path, or the path itself.
    const CMPath inRecord = TavoValue(value.toHash()).path();
    const CMPath path = inRecord.isEmpty() ? CMPath::fromQVariant(value) : inRecord;
    if (m_closeAttended(path)) {
        CMReply<QVariant> reply;
        reply.setValue(QVariant()); // the display may not have the message yet
        return reply;
    }
    CMReply<QVariant> reply =
        CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), value, {});
    Q_EMIT messageCancelled(path);
    return reply;
}

void ModelInterface::list(const BusMessage &call)
{
    BusWriter reply(call.createReply(), m_clients.limits().messageBytes);
    writeEntries(reply, CMCatalog::children(ModelArguments::readPathOrRoot(call)));
    m_clients.reply(call, reply.message(), reply.bytesWritten());
}

void ModelInterface::tree(const BusMessage &call)
{
    const CMPath path = ModelArguments::readPathOrRoot(call);
    BusWriter reply(call.createReply(), m_clients.limits().messageBytes);
    if (areTooMany(path, m_clients.limits().messageBytes)) {
        throw BusError::unsupportedValue("The value is too large for a message");
    }
    writeEntries(reply, CMCatalog::tree(path));
    m_clients.reply(call, reply.message(), reply.bytesWritten());
}

void ModelInterface::describe(const BusMessage &call)
{
    const QStringList paths = BusReader(call, m_clients.limits().valueBytes).readStringList();
    BusWriter reply(call.createReply(), m_clients.limits().messageBytes);
    reply.openArray("(ssss)");
    for (const QString &text : paths) {
        const CMPath path(text);
        const auto entry = CMCatalog::entry(path);
        if (entry && path.toString() == text) {
            reply.openStruct("ssss");
            writeEntry(reply, *entry);
            reply.writeString(sendableText(textOf(path)));
            reply.close();
        }
    }
    reply.close();
    m_clients.reply(call, reply.message(), reply.bytesWritten());
}

void ModelInterface::getRows(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = ModelArguments::readPath(reader);
    const std::int32_t first = reader.readInt32();
    const std::int32_t count = reader.readInt32();
    if (first < 0 || count < -1) {
        throw Refusals::invalidRowRange();
    }
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, first, count, reply));
    m_calls.answer(call, reply, writeRows, std::move(charge));
}

void ModelInterface::preview(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = ModelArguments::readPath(reader);
    const std::int32_t count = reader.readInt32();
    const std::int32_t length = reader.readInt32();
    if (count < 0 || length < 0) {
        throw Refusals::invalidPreview();
    }
    Quotas::Charge charge = m_calls.charge(call, 0);
    const CMReply<QVariant> rows;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, count, rows));
    const auto write = [path, length](BusWriter &reply, const QVariant &value) {
        const auto entry = CMCatalog::entry(path);
        writeTitle(reply, entry ? entry->title : TrString());
        reply.setMaxLength(length);
        writeRows(reply, value);
    };
    m_calls.answer(call, rows, write, std::move(charge));
}

void ModelInterface::matchRow(const BusMessage &call)
{
    const CMPath path = ModelArguments::readPath(call);
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
    reply.writeBoolean(CMSubscribe::closeNode(ModelArguments::readPath(call)));
    m_clients.reply(call, reply.message());
}

void ModelInterface::subscribe(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = ModelArguments::readPath(reader);
    m_subscriptions.add(call.sender(), ModelArguments::readChange(reader), path);
    m_clients.reply(call, call.createReply());
}

void ModelInterface::unsubscribe(const BusMessage &call)
{
    BusReader reader(call);
    const CMPath path = ModelArguments::readPath(reader);
    if (!m_subscriptions.remove(call.sender(), ModelArguments::readChange(reader), path)) {
        throw Refusals::noSuchSubscription();
    }
    m_clients.reply(call, call.createReply());
}

void ModelInterface::openInbox(const BusMessage &call)
{
    BusWriter reply(call.createReply());
    reply.writeString(m_inboxes.open(call.sender()).toString());
    m_clients.reply(call, reply.message());
}

void ModelInterface::closeInbox(const BusMessage &call)
{
    const CMPath path = ModelArguments::readPath(call);
    if (!m_inboxes.close(call.sender(), path)) {
        throw Refusals::noSuchInbox(path.toString().toStdString());
    }
    m_clients.reply(call, call.createReply());
}
