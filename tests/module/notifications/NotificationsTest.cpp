// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationsTest.h"

#include "support/PostedEvents.h"

#include <QLibrary>

#include <algorithm>
#include <dlfcn.h>
#include <regex>

namespace {
using WorkerCreate = void *(*)(const char *, void *);

WorkerCreate entryPoint()
{
    static QLibrary library(notificationsModule());
    static const auto create = reinterpret_cast<WorkerCreate>(library.resolve("worker_create"));
    if (create == nullptr) {
        ADD_FAILURE() << library.errorString().toStdString();
    }
    return create;
}

/// Passes all requests on to the model's root and reports them to the test.
class ObservedRoot : public CMAbstractWorker
{
public:
    explicit ObservedRoot(CMAbstractWorker *root)
        : m_root(root)
    {
    }

    std::function<void(const CMPath &)> onSetData;

    void ping(const CMSetDataRequest &request) override { m_root->ping(request); }
    void trace() override { m_root->trace(); }
    void getDataRequest(const CMGetDataRequest &request) override
    {
        m_root->getDataRequest(request);
    }
    void getRowsRequest(const CMGetRowsRequest &request) override
    {
        m_root->getRowsRequest(request);
    }
    void matchRowRequest(const CMMatchRowRequest &request) override
    {
        m_root->matchRowRequest(request);
    }
    void setDataRequest(const CMSetDataRequest &request) override
    {
        if (onSetData) {
            onSetData(request.path());
        }
        m_root->setDataRequest(request);
    }
    void connectChange(ChangeType type, const CMPath &path, QObject *receiver,
                       std::function<bool(ChangeNotifier *)> connectTo) override
    {
        m_root->connectChange(type, path, receiver, std::move(connectTo));
    }
    void disconnectChange(ChangeType type, const CMPath &path, QObject *receiver,
                          std::function<void(ChangeNotifier *)> disconnectFrom) override
    {
        m_root->disconnectChange(type, path, receiver, std::move(disconnectFrom));
    }

private:
    CMAbstractWorker *m_root;
};

ObservedRoot *observedRoot()
{
    static auto *root = new ObservedRoot(
        reinterpret_cast<CMAbstractWorker *(*)()>(dlsym(RTLD_NEXT, "_Z6CMRootv"))());
    return root;
}

/// Replaces the signature in entry and exit lines by the function's name.
std::string shortened(const std::string &message)
{
    static const std::regex signature("^(Enter|Leave) .*?::(\\w+)\\([^)]*\\)(?: const)?: ");
    return std::regex_replace(message, signature, "$1 $2: ");
}
} // namespace

// Replaces the library's function, also for the module.
CMAbstractWorker *CMRoot()
{
    return observedRoot();
}

NotificationsTest::NotificationsTest()
    : m_log("Notifications", log4cplus::TRACE_LOG_LEVEL)
    , m_services("Services"_s)
{
    ScriptedPlayers::instance().reset();
    ScriptedPlayers::instance().onCall = [this](const QString &call, const QString &id) {
        m_journal.append(id + QLatin1Char(' ') + call);
        note(m_journal.last().toStdString());
    };
    observedRoot()->onSetData = [this](const CMPath &path) {
        m_requestedPaths.append(path);
        note("to " + path.toString().toStdString());
    };
    m_services.take(TavoPowerManagerModuleRegisterPath(), [this](const CMSetDataRequest &request) {
        m_journal.append("register"_s);
        request.reply().setValue(QVariant());
    });
    m_services.take(responsePath(),
                    [this](const CMSetDataRequest &request) { on_response(request); });
    m_services.take(TavoPlayerMainAudioDuckingPath(), {});
    m_services.take(TavoPowerManagerResourceRequestPath(), {});
    setDucking(ScriptedService::accept());
    setResources(ScriptedService::accept());
    m_services.publish(
        TavoPlayerAlsaDeviceNotificationsPath(),
        TavoValue().setAudioDevice(TavoPlayerAudioDevice().setDevice("testdevice"_s)));
}

NotificationsTest::~NotificationsTest()
{
    // The callbacks may refer to variables of the test's body, which no longer exist.
    ScriptedPlayers::instance().onCall = nullptr;
    observedRoot()->onSetData = nullptr;
    unload();
    ScriptedPlayers::instance().reset();
}

void NotificationsTest::load()
{
    QVariantHash config;
    m_worker.reset(static_cast<CMWorker *>(entryPoint()("notifications", &config)));
    settle();
}

void NotificationsTest::unload()
{
    m_worker.reset();
}

QObject *NotificationsTest::player() const
{
    for (QObject *child : m_worker->children()) {
        if (qstrcmp(child->metaObject()->className(), "NotificationPlayer") == 0) {
            return child;
        }
    }
    return nullptr;
}

QTimer *NotificationsTest::inactivityTimer() const
{
    return player()->findChild<QTimer *>();
}

void NotificationsTest::fireInactivityTimer()
{
    inactivityTimer()->stop();
    QMetaObject::invokeMethod(inactivityTimer(), "timeout");
    settle();
}

void NotificationsTest::setDucking(const ScriptedService::Script &script)
{
    m_services.setScript(TavoPlayerMainAudioDuckingPath(),
                         [this, script](const CMSetDataRequest &request) {
                             const TavoPlayerAudioDuckingRequest record(request.value().toHash());
                             m_journal.append(record.duckAudio() ? "duck"_s : "unduck"_s);
                             script(request);
                         });
}

void NotificationsTest::setResources(const ScriptedService::Script &script)
{
    m_services.setScript(
        TavoPowerManagerResourceRequestPath(), [this, script](const CMSetDataRequest &request) {
            const TavoPowerManagerResourceRequest record(request.value().toHash());
            const bool acquires = record.action() == TavoPowerModuleActions::Acquire;
            m_journal.append(acquires ? "acquire"_s : "release"_s);
            script(request);
        });
}

void NotificationsTest::answer(const CMPath &path)
{
    settle();
    ASSERT_GT(m_services.requests(path).size(), m_answered[path]) << "no request to " << path;
    m_services.requests(path).at(m_answered[path]++).reply().setValue(QVariant());
    settle();
}

void NotificationsTest::refuse(const CMPath &path, const QString &message)
{
    settle();
    ASSERT_GT(m_services.requests(path).size(), m_answered[path]) << "no request to " << path;
    ScriptedService::refuse(message)(m_services.requests(path).at(m_answered[path]++));
    settle();
}

CMReply<QVariant>
NotificationsTest::revoke(TavoPowerManagerRevokeMessageType::Enum type,
                          const TavoList<TavoPowerManagerResources::Enum> &resources)
{
    return request(TavoNotificationsPath() + "/player/revokeResources"_s,
                   TavoPowerManagerRevokeMessage()
                       .setMessageType(type)
                       .setRevokeResources(resources)
                       .__variant());
}

TavoNotificationPlayerItem NotificationsTest::item(const QString &id, int priority)
{
    return TavoNotificationPlayerItem()
        .setId(id)
        .setContent("/sounds/"_s + id)
        .setType(TavoNotificationPlayerItemType::Uri)
        .setPriority(TavoNotificationItemPriority::Enum(priority))
        .setPlaybackResponsePath(responsePath());
}

CMReply<QVariant> NotificationsTest::enqueue(const TavoNotificationPlayerItem &item)
{
    return request(TavoNotificationPlayerEnqueuePath(),
                   TavoValue().setNotificationPlayerItem(item).__variant());
}

CMReply<QVariant> NotificationsTest::cancel(const QString &id)
{
    return request(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id).__variant());
}

CMReply<QVariant> NotificationsTest::request(const CMPath &path, const QVariant &value)
{
    const CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    settle();
    EXPECT_TRUE(reply.isFinished()) << "no answer from " << path;
    return reply;
}

ScriptedPlayer *NotificationsTest::play(const QString &id, int priority)
{
    const CMReply<QVariant> reply = enqueue(id, priority);
    EXPECT_FALSE(reply.error().isError()) << message(reply);
    EXPECT_TRUE(scripted(id) != nullptr && scripted(id)->plays > 0) << id << " doesn't play";
    return scripted(id);
}

void NotificationsTest::settle()
{
    deliverPosted();
}

bool NotificationsTest::isPlaying() const
{
    return TavoValue(CMRoot()->getValue(TavoNotificationPlayerIsPlayingPath()).toHash()).bool_();
}

QStringList NotificationsTest::journalOf(const QString &id) const
{
    QStringList lines;
    for (const QString &line : m_journal) {
        if (line.startsWith(id + QLatin1Char(' '))) {
            lines.append(line.mid(id.size() + 1));
        }
    }
    return lines;
}

int NotificationsTest::logged(log4cplus::LogLevel level, const std::string &message) const
{
    const auto records = m_log.records();
    return int(std::count_if(records.begin(), records.end(), [&](const auto &record) {
        return record.level == level && record.message == message;
    }));
}

int NotificationsTest::traced(log4cplus::LogLevel level, const std::string &line) const
{
    const auto records = m_log.records();
    return int(std::count_if(records.begin(), records.end(), [&](const auto &record) {
        return record.level == level && shortened(record.message) == line;
    }));
}

int NotificationsTest::entered(log4cplus::LogLevel level, const std::string &function,
                               const std::string &text) const
{
    return traced(level, "Enter " + function + ": " + text);
}

int NotificationsTest::left(log4cplus::LogLevel level, const std::string &function,
                            const std::string &text) const
{
    return traced(level, "Leave " + function + ": " + text);
}

void NotificationsTest::beginStory()
{
    m_log.clear();
    m_notes.clear();
    m_tellsStory = true;
}

void NotificationsTest::note(const std::string &line)
{
    if (m_tellsStory) {
        m_notes.push_back({m_log.records().size(), line});
    }
}

std::vector<std::string> NotificationsTest::story() const
{
    std::vector<std::string> lines;
    const auto &levels = log4cplus::getLogLevelManager();
    const auto records = m_log.records();
    auto note = m_notes.begin();
    for (std::size_t i = 0; i <= records.size(); ++i) {
        for (; note != m_notes.end() && note->after == i; ++note) {
            lines.push_back(note->line);
        }
        if (i < records.size()) {
            lines.push_back(levels.toString(records[i].level) + ' ' +
                            shortened(records[i].message));
        }
    }
    return lines;
}

void NotificationsTest::on_response(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    m_journal.append(response.id() + QLatin1Char(' ') +
                     TavoNotificationPlayerResponseType::toString(response.type()).toLower());
    request.reply().setValue(QVariant());
}
