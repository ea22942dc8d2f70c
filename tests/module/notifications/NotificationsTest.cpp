// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationsTest.h"

#include "support/PostedEvents.h"

#include <algorithm>
#include <regex>

#include <QLibrary>

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
} // namespace

NotificationsTest::NotificationsTest()
    : m_log("Notifications", log4cplus::TRACE_LOG_LEVEL)
    , m_services("Services"_s)
{
    ScriptedPlayers::instance().reset();
    ScriptedPlayers::instance().onCall = [this](const QString &call, const QString &id) {
        m_journal.append(id + QLatin1Char(' ') + call);
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
    // What a test has put here may refer to variables that have gone with the test's body.
    ScriptedPlayers::instance().onCall = nullptr;
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

int NotificationsTest::traced(log4cplus::LogLevel level, const std::string &start,
                              const std::string &function, const std::string &text) const
{
    const auto records = m_log.records();
    // What stands between the name and the text is the signature's end.
    const std::regex line(start + ".*::" + function + "\\([^)]*\\)(?: const)?: ");
    return int(std::count_if(records.begin(), records.end(), [&](const auto &record) {
        std::smatch match;
        return record.level == level &&
               std::regex_search(record.message, match, line,
                                 std::regex_constants::match_continuous) &&
               match.suffix() == text;
    }));
}

int NotificationsTest::entered(log4cplus::LogLevel level, const std::string &function,
                               const std::string &text) const
{
    return traced(level, "Enter ", function, text);
}

int NotificationsTest::left(log4cplus::LogLevel level, const std::string &function,
                            const std::string &text) const
{
    return traced(level, "Leave ", function, text);
}

void NotificationsTest::on_response(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    m_journal.append(response.id() + QLatin1Char(' ') +
                     TavoNotificationPlayerResponseType::toString(response.type()).toLower());
    request.reply().setValue(QVariant());
}
