// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Attacks.h"

#include "Hostile.h"
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <core/records/enumerations.h>

#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using Priority = TavoNotificationItemPriority;
using Type = TavoNotificationPlayerItemType;

constexpr int mebi = 1 << 20;

const std::string &mebibyte()
{
    static const std::string text(mebi, 'x');
    return text;
}

const std::string &hundredKibibytes()
{
    static const std::string text(100 * 1024, 'y');
    return text;
}

/// Priorities for somebody who wants to be first.
int highPriority(Hostile &hostile)
{
    return hostile.dice().oneOf(std::vector<int>{Priority::Urgent, Priority::Urgent, INT_MAX});
}

struct Sound
{
    Type::Enum type = Type::Uri;
    int priority = Priority::Normal;
    std::string content{};
    const char *format = "";
    bool loops = false;
};

void enqueue(Hostile &hostile, const Sound &sound)
{
    hostile.send(Connection::model, "Call", "sv", "/notifications/player/enqueue", "a{sv}", 1,
                 "notificationPlayerItem", "a{sv}", 6, "id", "s", hostile.newName().c_str(), "type",
                 "i", int(sound.type), "priority", "i", sound.priority, "content", "s",
                 sound.content.c_str(), "contentStreamFormat", "s", sound.format, "loop", "b",
                 int(sound.loops));
}

void openMessage(Hostile &hostile, const char *text, int timeout, int priority)
{
    hostile.send(Connection::model, "Call", "sv", "/notifications/display/open", "a{sv}", 1,
                 "notificationDisplayItem", "a{sv}", 3, "message", "s", text, "timeout", "i",
                 timeout, "priority", "i", priority);
}

struct Notification
{
    std::uint32_t replaces = 0;
    const char *title = "hostile";
    const char *body = "";
    std::vector<std::string> actions{};
    int priority = Priority::Normal;
    int timeout = -1;
    std::string sound{};
};

BusMessage createNotify(Hostile &hostile, const Notification &notification)
{
    BusMessage call = hostile.connection().createCall(Connection::desktop, "Notify");
    append(call, "susss", "crowd", notification.replaces, "", notification.title,
           notification.body);
    std::vector<char *> actions;
    for (const std::string &action : notification.actions) {
        actions.push_back(const_cast<char *>(action.c_str()));
    }
    actions.push_back(nullptr);
    sd_bus_message_append_strv(call.get(), actions.data());
    if (notification.sound.empty()) {
        append(call, "a{sv}", 1, "x-tavo-priority", "i", notification.priority);
    } else {
        append(call, "a{sv}", 2, "x-tavo-priority", "i", notification.priority, "sound-file", "s",
               notification.sound.c_str());
    }
    append(call, "i", notification.timeout);
    return call;
}

/// The paths directly below one.
std::vector<std::string> list(Hostile &hostile, const char *path)
{
    BusMessage call = hostile.connection().createCall(Connection::model, "List");
    append(call, "s", path);
    std::vector<std::string> paths;
    if (const auto reply = hostile.ask(call)) {
        BusReader reader(*reply);
        reader.enterArray("(sss)");
        while (!reader.isAtEnd()) {
            reader.enterStruct("sss");
            paths.push_back(reader.readString().toStdString());
            reader.skip();
            reader.skip();
            reader.leave();
        }
    }
    return paths;
}

// Unread messages

void introspectUnread(Hostile &hostile)
{
    constexpr int calls = 2500;
    constexpr Connection::Target description{"org.tavo.Model1", "/org/tavo/Model1",
                                             "org.freedesktop.DBus.Introspectable"};
    for (int i = 0; i < calls && hostile.goesOn(); ++i) {
        hostile.send(description, "Introspect", "");
    }
    hostile.readNothing();
}

void subscribeUnread(Hostile &hostile)
{
    const char *rule = "type='signal'";
    hostile.send(Connection::bus, "AddMatch", "s", rule);
    for (const char *change : {"rows", "node", "value"}) {
        for (const char *path :
             {"/notifications/display/queue", "/notifications/player/isPlaying",
              "/notifications/display/ended", "/attention/doNotDisturb", "/attention/ended",
              "/attention/missed", "/player/mainAudio/state", "/powerManager/state"}) {
            hostile.send(Connection::model, "Subscribe", "ss", path, change);
        }
    }
    hostile.readNothing();
}

void listUnread(Hostile &hostile)
{
    constexpr int calls = 2000;
    for (int i = 0; i < calls && hostile.goesOn(); ++i) {
        hostile.send(Connection::model, hostile.dice().percent(50) ? "Tree" : "List", "s", "/");
    }
    hostile.readNothing();
}

/// Calls over many connections, as fast as the bus takes them, for replies of all sizes.
void manyUnread(Hostile &hostile)
{
    constexpr int connections = 10;
    const std::string text(60000, 'm');
    openMessage(hostile, text.c_str(), 1000, Priority::Normal);
    std::vector<Connection *> all{&hostile.connection()};
    while (hostile.goesOn() && all.size() < connections) {
        all.push_back(&hostile.connectAgain());
    }
    while (hostile.goesOn()) {
        for (Connection *connection : all) {
            const bool isTree = hostile.dice().percent(50);
            const BusMessage call =
                connection->createCall(Connection::model, isTree ? "Tree" : "GetValue");
            append(call, "s", isTree ? "/" : "/notifications/display/current");
            hostile.send(*connection, call);
        }
    }
}

void longActionKeys(Hostile &hostile)
{
    constexpr int actions = 8;
    Notification notification;
    notification.timeout = 1000;
    notification.actions.assign(2 * actions, hundredKibibytes());
    while (hostile.goesOn()) {
        hostile.send(createNotify(hostile, notification));
        hostile.read();
    }
}

void outsider(Hostile &hostile)
{
    hostile.send(Connection::bus, "AddMatch", "s", "type='signal'");
    hostile.readReplies(1);
    constexpr const char *interfaces[] = {
        "org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Peer", "org.tavo.Model1",
        "org.freedesktop.DBus.Properties", "org.freedesktop.Notifications"};
    constexpr const char *methods[] = {"Introspect", "Ping", "Tree", "GetAll", "Notify"};
    while (hostile.goesOn()) {
        for (std::size_t i = 0; i < std::size(methods); ++i) {
            const Connection::Target target{"org.tavo.Model1", "/org/tavo/Model1", interfaces[i]};
            hostile.send(target, methods[i], "s", "/");
        }
        hostile.readReplies(std::size(methods));
    }
}

// Files

void sparseFiles(Hostile &hostile)
{
    constexpr const char *names[] = {"/sparse.wav", "/sparse.ogg", "/sparse.mp3", "/sparse.flac",
                                     "/sparse"};
    while (hostile.goesOn()) {
        const std::string file =
            hostile.setting().uploads +
            names[std::size_t(hostile.dice().number(0, int(std::size(names)) - 1))];
        if (hostile.dice().percent(50)) {
            enqueue(hostile, {Type::Uri, highPriority(hostile), file});
        } else {
            Notification notification;
            notification.priority = highPriority(hostile);
            notification.timeout = 1000;
            notification.sound = file;
            hostile.send(createNotify(hostile, notification));
        }
        hostile.readReplies(1);
    }
}

/// Swaps a link between a folder that is allowed and one that is not, while the host opens it.
void swappedFolders(Hostile &hostile)
{
    const std::string link = hostile.setting().uploads + '/' + hostile.newName();
    const std::string next = link + "-next";
    const std::string *targets[] = {&hostile.setting().sounds, &hostile.setting().forbidden};
    for (int i = 0; hostile.goesOn(); ++i) {
        if (::symlink(targets[i % 2]->c_str(), next.c_str()) == 0) {
            ::rename(next.c_str(), link.c_str());
        }
        enqueue(hostile, {Type::Uri, highPriority(hostile), link + Setting::alarm});
        hostile.read();
    }
    ::unlink(link.c_str());
}

void devicesAsStreams(Hostile &hostile)
{
    constexpr const char *sources[] = {"/dev/zero", "/dev/full",   "/dev/random",
                                       "/dev/tty",  "/proc/kmsg",  "/sys/kernel/notes",
                                       "/dev/mem",  "/etc/passwd", "/proc/self/mem"};
    while (hostile.goesOn()) {
        for (const char *source : sources) {
            enqueue(hostile, {Type::Stream, highPriority(hostile), source,
                              "audio/L16;rate=48000;channels=2", true});
        }
        hostile.readReplies(std::size(sources));
    }
}

void http(Hostile &hostile)
{
    constexpr const char *uris[] = {"http:/../../alarm.wav",
                                    "http://127.0.0.1:1/alarm.wav",
                                    "http://localhost:22/",
                                    "http://[::1]:631/alarm.wav",
                                    "http://user:password@0/alarm.wav",
                                    "HTTP:alarm.wav",
                                    "http:///etc/passwd",
                                    "file://127.0.0.1/etc/passwd",
                                    "ftp://localhost/alarm.wav"};
    while (hostile.goesOn()) {
        for (const char *uri : uris) {
            enqueue(hostile, {Type::Uri, highPriority(hostile), uri});
        }
        hostile.readReplies(std::size(uris));
    }
}

// Memory

void placeholders(Hostile &hostile)
{
    static const std::string title = [] {
        std::string text;
        constexpr int count = 11000;
        for (int i = 0; i < count; ++i) {
            text += "%1";
        }
        return text;
    }();
    while (hostile.goesOn()) {
        hostile.send(Connection::model, "Call", "sv", "/notifications/display/open", "a{sv}", 1,
                     "notificationDisplayItem", "a{sv}", 3, "message", "s", "text", "timeout", "i",
                     1000, "title", "a{sv}", 3, "context", "s", "", "source", "s", title.c_str(),
                     "arguments", "av", 1, "s", hundredKibibytes().c_str());
        hostile.send(Connection::model, "List", "s", "/notifications/display/simpleMessageNode");
        hostile.readReplies(2);
    }
}

void largeBodies(Hostile &hostile)
{
    Notification notification;
    notification.body = mebibyte().c_str();
    notification.timeout = 0;
    notification.priority = highPriority(hostile);
    while (hostile.goesOn()) {
        hostile.send(createNotify(hostile, notification));
        hostile.read();
    }
}

void manyMessages(Hostile &hostile)
{
    const std::string text(std::size_t(hostile.dice().number(10, 60000)), 'm');
    const int timeout = hostile.dice().percent(50) ? 0 : 1000;
    const int priority = highPriority(hostile);
    while (hostile.goesOn()) {
        openMessage(hostile, text.c_str(), timeout, priority);
        hostile.read();
    }
}

/// Messages without a timeout, put before everybody else's.
void headOfTheDisplay(Hostile &hostile)
{
    Notification notification;
    notification.priority = INT_MAX;
    notification.timeout = 0;
    hostile.send(createNotify(hostile, notification));
    hostile.readReplies(1);
}

void duckingNames(Hostile &hostile)
{
    while (hostile.goesOn()) {
        const bool isLong = hostile.dice().percent(20);
        const std::string name = isLong ? mebibyte() + hostile.newName() : hostile.newName();
        hostile.send(Connection::model, "Call", "sv", "/player/mainAudio/ducking", "a{sv}", 2,
                     "requester", "s", name.c_str(), "duckAudio", "b", 1);
        hostile.readReplies(1);
    }
}

void registrations(Hostile &hostile)
{
    constexpr const char *paths[] = {
        "/notifications/player/revokeResources", "/notifications/player/enqueue",
        "/notifications/player/revokeResources/below", "/player/mainAudio/state/below", "/nowhere"};
    while (hostile.goesOn()) {
        const bool isOthers = hostile.dice().percent(20);
        const std::string name = isOthers ? "notifications" : hostile.newName();
        for (const char *path : paths) {
            hostile.send(Connection::model, "Call", "sv", "/powerManager/moduleRegister", "a{sv}",
                         2, "moduleName", "s", name.c_str(), "revokeResourcesPath", "s", path);
            hostile.send(Connection::model, "Call", "sv", "/powerManager/resourceRequest", "a{sv}",
                         3, "moduleName", "s", name.c_str(), "resource", "i", 2, "action", "i",
                         hostile.dice().number(1, 2));
        }
        hostile.readReplies(2 * std::size(paths));
    }
}

void storedSubscriptions(Hostile &hostile)
{
    const std::string name(4000, 's');
    while (hostile.goesOn()) {
        const std::string path = '/' + name + hostile.newName();
        hostile.send(Connection::model, "Subscribe", "ss", path.c_str(), "value");
        hostile.send(Connection::model, "OpenInbox", "");
        hostile.read();
    }
    hostile.readNothing();
}

// Sounds

/// A stream that never begins. The client leaves at once or stays.
void silentFifo(Hostile &hostile)
{
    const std::string fifo = hostile.setting().uploads + '/' + hostile.newName();
    if (::mkfifo(fifo.c_str(), 0666) != 0) {
        return;
    }
    ::chmod(fifo.c_str(), 0666);
    enqueue(hostile,
            {Type::Stream, highPriority(hostile), fifo, "audio/L16;rate=48000;channels=2"});
    hostile.readReplies(1);
    if (hostile.dice().percent(50)) {
        hostile.readNothing();
    }
    ::unlink(fifo.c_str());
}

/// Sounds that never end.
void endlessSounds(Hostile &hostile)
{
    const Type::Enum type = hostile.dice().percent(50) ? Type::Fake : Type::Uri;
    const std::string content = hostile.setting().sounds + Setting::alarm;
    const int priority = highPriority(hostile);
    while (hostile.goesOn()) {
        enqueue(hostile, {type, priority, content, "", true});
        hostile.readReplies(1);
    }
}

/// Sounds that stay when their client has left.
void soundsLeftBehind(Hostile &hostile)
{
    constexpr int count = 50;
    const int priority = highPriority(hostile);
    for (int i = 0; i < count && hostile.goesOn(); ++i) {
        enqueue(hostile, {Type::Uri, priority, hostile.setting().sounds + Setting::alarm});
    }
    hostile.readReplies(count);
}

void soundData(Hostile &hostile)
{
    while (hostile.goesOn()) {
        enqueue(hostile, {Type::Data, highPriority(hostile), mebibyte()});
        hostile.read();
    }
}

/// Ends sounds and messages whose names are easy to guess.
void guessedNames(Hostile &hostile)
{
    for (std::uint32_t number = 0; hostile.goesOn(); ++number) {
        for (const char *prefix : {"desktop-", "notification-", "/dbus/sounds/", ""}) {
            const std::string id = prefix + std::to_string(number);
            hostile.send(Connection::model, "Call", "sv", "/notifications/player/cancel", "a{sv}",
                         1, "string", "s", id.c_str());
            hostile.send(Connection::model, "Call", "sv", "/notifications/player/enqueue", "a{sv}",
                         1, "notificationPlayerItem", "a{sv}", 2, "id", "s", id.c_str(), "type",
                         "i", int(Type::Fake));
        }
        hostile.read();
    }
}

// Time

void floodInboxes(Hostile &hostile)
{
    while (hostile.goesOn()) {
        const std::vector<std::string> inboxes = list(hostile, "/dbus/inbox");
        constexpr int calls = 10;
        for (const std::string &inbox : inboxes) {
            for (int i = 0; i < calls && hostile.goesOn(); ++i) {
                hostile.send(Connection::model, "Call", "sv", inbox.c_str(), "s",
                             mebibyte().c_str());
            }
        }
        hostile.read();
    }
}

void pipelinedLists(Hostile &hostile)
{
    constexpr int calls = 1000;
    constexpr const char *paths[] = {"/", "/notifications", "/dbus",
                                     "/notifications/display/simpleMessageNode"};
    for (int i = 0; i < calls && hostile.goesOn(); ++i) {
        const char *path = paths[hostile.dice().number(0, int(std::size(paths)) - 1)];
        hostile.send(Connection::model, hostile.dice().percent(50) ? "List" : "Tree", "s", path);
        hostile.read();
    }
    hostile.readReplies(calls);
}

void pipelinedRows(Hostile &hostile)
{
    constexpr int calls = 1000;
    for (int i = 0; i < calls && hostile.goesOn(); ++i) {
        if (hostile.dice().percent(50)) {
            hostile.send(Connection::model, "GetRows", "sii", "/notifications/display/queue", 0,
                         -1);
        } else {
            hostile.send(Connection::model, "MatchRow", "sv", "/notifications/display/queue", "s",
                         "/none");
        }
        hostile.read();
    }
    hostile.readReplies(calls);
}

void describeMuch(Hostile &hostile)
{
    BusMessage call = hostile.connection().createCall(Connection::model, "Describe");
    constexpr std::size_t count = 20000;
    std::vector<char *> paths(count, const_cast<char *>("/notifications/player/isPlaying"));
    paths.push_back(nullptr);
    sd_bus_message_append_strv(call.get(), paths.data());
    while (hostile.goesOn()) {
        hostile.ask(call);
        call = hostile.connection().createCall(Connection::model, "Describe");
        sd_bus_message_append_strv(call.get(), paths.data());
    }
}

void largeValues(Hostile &hostile)
{
    while (hostile.goesOn()) {
        hostile.send(Connection::model, "Call", "sv", "/notifications/player/enqueue", "s",
                     mebibyte().c_str());
        hostile.read();
    }
}

void smallCalls(Hostile &hostile)
{
    while (hostile.goesOn()) {
        BusMessage call = hostile.connection().createCall(Connection::model, "GetValue");
        append(call, "s", "/notifications/player/isPlaying");
        hostile.send(call, false);
    }
}

/// Messages that are no calls: signals to the host.
void signalsToTheHost(Hostile &hostile)
{
    while (hostile.goesOn()) {
        sd_bus_message *signal = nullptr;
        BusMessage call = hostile.connection().createCall(Connection::bus, "GetId");
        if (sd_bus_message_new_signal(sd_bus_message_get_bus(call.get()), &signal,
                                      "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                      "NameOwnerChanged") < 0) {
            return;
        }
        const BusMessage message = BusMessage::adopt(signal);
        append(message, "sss", "org.tavo.Model1", ":1.0", "");
        sd_bus_message_set_destination(signal, "org.tavo.Model1");
        hostile.send(message, false);
    }
}

void shortVisits(Hostile &hostile)
{
    hostile.send(Connection::model, "OpenInbox", "");
    hostile.send(Connection::model, "Subscribe", "ss", "/notifications/display/queue", "rows");
    openMessage(hostile, "visited", 1, Priority::Normal);
}

void descriptors(Hostile &hostile)
{
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (int i = 0; hostile.goesOn(); ++i) {
        hostile.send(Connection::model, "Call", "sv", "/notifications/player/enqueue", "h",
                     descriptor);
        hostile.read();
    }
    ::close(descriptor);
}

/// Keeps changing what others have subscribed to.
void manyChanges(Hostile &hostile)
{
    Notification notification;
    notification.priority = Priority::Low;
    notification.timeout = 1000;
    const auto reply = hostile.ask(createNotify(hostile, notification));
    if (!reply) {
        return;
    }
    notification.replaces = BusReader(*reply).readUInt32();
    while (hostile.goesOn()) {
        notification.priority = hostile.dice().number(0, Priority::Urgent);
        hostile.send(createNotify(hostile, notification));
        hostile.read();
    }
}

// The module for attention

void setDoNotDisturb(Hostile &hostile, bool isOn)
{
    hostile.send(Connection::model, "Call", "sv", "/attention/setDoNotDisturb", "a{sv}", 1,
                 "attentionDoNotDisturb", "a{sv}", 1, "on", "b", int(isOn));
}

void requestAttention(Hostile &hostile, const std::string &source, int timeout)
{
    hostile.send(Connection::model, "Call", "sv", "/attention/notify", "a{sv}", 1, "attentionItem",
                 "a{sv}", 3, "title", "s", "hostile", "application", "s", source.c_str(), "timeout",
                 "i", timeout);
}

/// Each change is told to all who have subscribed, and each end of do-not-disturb sums up what was kept back.
void toggleDoNotDisturb(Hostile &hostile)
{
    while (hostile.goesOn()) {
        setDoNotDisturb(hostile, true);
        requestAttention(hostile, hostile.newName(), 1000);
        setDoNotDisturb(hostile, false);
        hostile.read();
    }
    setDoNotDisturb(hostile, false);
    hostile.readReplies(1);
}

void madeUpSources(Hostile &hostile)
{
    const std::string name(std::size_t(hostile.dice().number(1, 2000)), 's');
    while (hostile.goesOn()) {
        requestAttention(hostile, name + hostile.newName(), hostile.dice().number(1, 1000));
        hostile.read();
    }
}

void soundsOfNotifications(Hostile &hostile)
{
    const std::string content = hostile.setting().sounds + Setting::alarm;
    while (hostile.goesOn()) {
        hostile.send(Connection::model, "Call", "sv", "/attention/notify", "a{sv}", 1,
                     "attentionItem", "a{sv}", 3, "application", "s", hostile.newName().c_str(),
                     "priority", "i", highPriority(hostile), "sound", "a{sv}", 2, "content", "s",
                     content.c_str(), "loop", "b", 1);
        hostile.readReplies(1);
    }
}

/// What is shown stays, and must count as it is.
void refusedReplacements(Hostile &hostile)
{
    const std::string text(60'000, 'x');
    while (hostile.goesOn()) {
        const std::string id = hostile.newName();
        hostile.send(Connection::model, "Call", "sv", "/attention/notify", "a{sv}", 1,
                     "attentionItem", "a{sv}", 3, "id", "s", id.c_str(), "title", "s", "Title",
                     "text", "s", text.c_str());
        hostile.send(Connection::model, "Call", "sv", "/attention/replace", "a{sv}", 1,
                     "attentionItem", "a{sv}", 3, "id", "s", id.c_str(), "title", "s", "Title",
                     "sound", "a{sv}", 1, "content", "s", "/etc/passwd");
        hostile.readReplies(2);
    }
}

void chosenActions(Hostile &hostile)
{
    constexpr int messages = 5000;
    while (hostile.goesOn()) {
        hostile.send(Connection::model, "Call", "sv", "/attention/notify", "a{sv}", 1,
                     "attentionItem", "a{sv}", 3, "title", "s", "Title", "application", "s",
                     hostile.newName().c_str(), "actions", "aa{sv}", 2, 1, "key", "s", "a", 1,
                     "key", "s", "b");
        const std::string path = "/attention/messages/" +
                                 std::to_string(hostile.dice().number(1, messages)) + "/actions/a";
        hostile.send(Connection::model, "Call", "sv", path.c_str(), "s", "");
        hostile.readReplies(2);
    }
}

void searchHistory(Hostile &hostile)
{
    while (hostile.goesOn()) {
        const std::string text = hostile.dice().percent(50) ? "h o s t i l e" : hostile.newName();
        hostile.send(Connection::model, "Call", "sv", "/attention/history", "a{sv}", 1,
                     "attentionQuery", "a{sv}", 2, "limit", "i", 200, "search", "s", text.c_str());
        hostile.readReplies(1);
    }
}

void inhibitForever(Hostile &hostile)
{
    while (hostile.goesOn()) {
        hostile.send(Connection::desktop, "Inhibit", "ssa{sv}", "crowd", mebibyte().c_str(), 0);
        hostile.send(Connection::desktop, "Inhibit", "ssa{sv}", "crowd", hundredKibibytes().c_str(),
                     0);
        hostile.readReplies(2);
    }
}
} // namespace

const std::vector<Attack> &attacks()
{
    static const std::vector<Attack> all{
        {"introspects 2,500 times, reads nothing", introspectUnread},
        {"subscribes to everything, reads nothing", subscribeUnread},
        {"lists everything, reads nothing", listUnread},
        {"many connections that read nothing", manyUnread},
        {"outsider calls and listens", outsider, Attack::Who::Outsider},
        {"notifications with long action keys", longActionKeys},
        {"sound files of gigabytes of nothing", sparseFiles},
        {"folders swapped while they are opened", swappedFolders},
        {"devices and files as streams", devicesAsStreams},
        {"http to where it may not go", http},
        {"titles that grow by place-holders", placeholders},
        {"notifications with 1 MB of text", largeBodies},
        {"messages by Call", manyMessages},
        {"stays at the head of the display", headOfTheDisplay},
        {"ducking for many, with long names", duckingNames},
        {"module registrations", registrations},
        {"subscriptions and inboxes without end", storedSubscriptions},
        {"FIFO without a writer", silentFifo},
        {"urgent sounds without end", endlessSounds},
        {"sounds left behind", soundsLeftBehind},
        {"sounds of 1 MB in a call", soundData},
        {"guesses names of sounds", guessedNames},
        {"1 MB calls into others' inboxes", floodInboxes},
        {"pipelined lists of nodes", pipelinedLists},
        {"pipelined lists of rows", pipelinedRows},
        {"describes 20,000 paths at once", describeMuch},
        {"requests of 1 MB that are refused", largeValues},
        {"small calls without replies", smallCalls},
        {"signals to the host", signalsToTheHost},
        {"connects, subscribes, leaves", shortVisits},
        {"file descriptors", descriptors},
        {"changes a notification all the time", manyChanges},
        {"toggles do-not-disturb", toggleDoNotDisturb},
        {"notifications of made-up programs", madeUpSources},
        {"endless sounds of notifications", soundsOfNotifications},
        {"replaces with forbidden sounds", refusedReplacements},
        {"chooses others' actions", chosenActions},
        {"searches the history", searchHistory},
        {"inhibits notifications", inhibitForever},
    };
    return all;
}
