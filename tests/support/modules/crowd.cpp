// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <core/tavo.h>

#include <QElapsedTimer>
#include <QHash>
#include <QThread>

#include <algorithm>
#include <functional>
#include <iterator>
#include <malloc.h>
#include <memory>
#include <random>
#include <vector>

// A worker that sends the notifications many requests. A request at /crowd/run says what to do. It
// is answered when all of that is complete, each request has got one reply and each sound one end;
// otherwise with an error that says what was wrong. Its value is a hash with "do":
//
//   queueSounds    queue "count" placeholder sounds
//   cancelSounds   cancel all of them, in reverse order if "last" is true
//   openNodes      open "count" notifications, each with a node of the crowd
//   openShared     open "count" notifications of mixed priorities with the same node
//   openMessages   open "count" messages
//   closeAll       close all of them, in reverse order if "last" is true
//   weigh          note how much heap the process uses
//   weighAgain     fail if it uses over "max" KiB more than noted
//   mix            send "count" requests of every kind, mixed, from each of "threads" threads
//
// The duration is logged under "Crowd".

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Crowd");

/// Bytes that the process has allocated and not freed. The process's memory would be no measure,
/// since the heap keeps the gaps between what is still in use.
long heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return long(info.uordblks + info.hblkhd);
}

CMPath responsePath()
{
    return CMPath(QStringLiteral("/crowd/response"));
}

TavoNotificationPlayerItem sound(const QString &id, TavoNotificationPlayerItemType::Enum type)
{
    return TavoNotificationPlayerItem().setId(id).setType(type).setPlaybackResponsePath(
        responsePath());
}

using Answered = std::function<void(const CMReply<QVariant> &)>;

/// Sends a request. The reply is passed on in the context's thread.
void ask(QObject *context, const CMPath &path, const QVariant &value, const Answered &answered)
{
    const CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    // Queued, so that it is never called from here, even if the reply comes at once.
    reply.onFinished(context, answered, Qt::QueuedConnection);
}

/// One of several objects that send mixed requests at the same time. Lives in its own thread.
class Member : public QObject
{
    Q_OBJECT

public:
    Member(int number, int count)
        : m_name(QString::number(number))
        , m_count(count)
        , m_random(unsigned(number))
    {
    }

    void begin();

    // Only for reading after the thread has ended.
    const QStringList &accepted() const { return m_accepted; }
    const QList<CMPath> &opened() const { return m_opened; }
    bool wasAnsweredOnceEach() const
    {
        return std::all_of(m_answers.begin(), m_answers.end(), [](int n) { return n == 1; });
    }

Q_SIGNALS:
    void done();

private:
    int pick(int count) { return int(m_random() % unsigned(count)); }
    void sendNext();
    void send(const CMPath &path, const QVariant &value, const Answered &answered = {});
    void enqueue();
    void cancel();
    void open();
    void close();
    void revoke();

    const QString m_name;
    const int m_count;
    std::mt19937 m_random;
    std::vector<int> m_answers; // to each request
    int m_answered = 0;
    QStringList m_accepted;
    QList<CMPath> m_opened;
};

void Member::begin()
{
    // Keeps this many requests in flight.
    constexpr int window = 16;
    for (int i = 0; i < window; ++i) {
        sendNext();
    }
}

void Member::sendNext()
{
    if (int(m_answers.size()) == m_count) {
        return;
    }
    constexpr void (Member::*requests[])() = {&Member::enqueue, &Member::enqueue, &Member::enqueue,
                                              &Member::cancel,  &Member::open,    &Member::open,
                                              &Member::close,   &Member::revoke};
    (this->*requests[std::size_t(pick(std::size(requests)))])();
}

void Member::send(const CMPath &path, const QVariant &value, const Answered &answered)
{
    const std::size_t number = m_answers.size();
    m_answers.push_back(0);
    ask(this, path, value, [this, number, answered](const CMReply<QVariant> &reply) {
        ++m_answers[number];
        if (answered && !reply.error().isError()) {
            answered(reply);
        }
        sendNext();
        if (++m_answered == m_count) {
            Q_EMIT done();
        }
    });
}

void Member::enqueue()
{
    using Type = TavoNotificationPlayerItemType::Enum;
    constexpr int types[] = {0, 3, 3, 7}; // a missing file, two placeholders, an invalid type
    constexpr int priorities = 4;
    const QString id = m_name + '-' + QString::number(m_answers.size());
    const auto item = sound(id, Type(types[pick(std::size(types))]))
                          .setContent(QStringLiteral("/nowhere.wav"))
                          .setLoop(pick(2) == 0)
                          .setPriority(TavoNotificationItemPriority::Enum(pick(priorities)));
    send(TavoNotificationPlayerEnqueuePath(),
         TavoValue().setNotificationPlayerItem(item).__variant(),
         [this, id](const CMReply<QVariant> &) { m_accepted.append(id); });
}

void Member::cancel()
{
    const QString id = m_accepted.value(m_accepted.isEmpty() ? 0 : pick(m_accepted.size()));
    send(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id).__variant());
}

void Member::open()
{
    TavoNotificationDisplayItem item;
    constexpr int maxTimeoutMs = 20;
    item.setTimeout(pick(maxTimeoutMs));
    item.setPriority(TavoNotificationItemPriority::Enum(pick(4)));
    if (pick(4) != 0) {
        item.setMessage(QStringLiteral("message of %1").arg(m_name));
    }
    send(TavoNotificationDisplayOpenPath(),
         TavoValue().setNotificationDisplayItem(item).__variant(),
         [this](const CMReply<QVariant> &reply) {
             m_opened.append(TavoValue(reply.value().toHash()).path());
         });
}

void Member::close()
{
    const CMPath path = m_opened.value(m_opened.isEmpty() ? 0 : pick(m_opened.size()));
    send(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path).__variant());
}

void Member::revoke()
{
    using Type = TavoPowerManagerRevokeMessageType::Enum;
    send(TavoNotificationsPath() + QStringLiteral("/player/revokeResources"),
         TavoPowerManagerRevokeMessage()
             .setMessageType(Type(pick(2)))
             .setRevokeResources({TavoPowerManagerResources::Audio})
             .__variant());
}

class CrowdWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    explicit CrowdWorker(const QVariantHash &config);
    ~CrowdWorker() override { endThreads(); }

private Q_SLOTS:
    void on_run_activated(const CMSetDataRequest &request);
    void on_response_activated(const CMSetDataRequest &request);

private:
    void queueSounds(int count);
    void cancelSounds(bool lastFirst);
    void openNodes(int count, bool shared);
    void openMessages(int count);
    void closeAll(bool lastFirst);
    void mix(int threads, int count);
    void on_member_done();
    void endThreads();

    /// Sends a request and counts the replies, which must not be errors.
    void askFor(const CMPath &path, const TavoHash &value);
    void waitForResponses(int count) { m_responsesAwaited = count; }
    void checkDone();
    QString complaint() const;

    CMSetDataRequest m_run; // the current one
    bool m_running = false;
    QString m_what;
    QElapsedTimer m_elapsed;
    int m_answersAwaited = 0;
    int m_responsesAwaited = 0;
    int m_refused = 0;
    bool m_refusalsMatter = true;

    long m_heapBefore = 0;
    long m_heapGrowth = 0; // KiB
    long m_heapGrowthAllowed = 0;
    QStringList m_sounds;               // ids of accepted sounds
    QHash<QString, int> m_ends;         // how often each has ended
    QList<CMListRowsNode *> m_messages; // of the crowd
    QList<CMPath> m_open;               // to be closed by closeAll

    std::vector<std::unique_ptr<QThread>> m_threads;
    std::vector<std::unique_ptr<Member>> m_members;
    int m_membersAwaited = 0;
};

CrowdWorker::CrowdWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Crowd"))
{
    CMActivateNode::create(nodes(), responsePath())
        ->setInvoke(this, &CrowdWorker::on_response_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), CMPath(QStringLiteral("/crowd/run")))
        ->setInvoke(this, &CrowdWorker::on_run_activated, Qt::QueuedConnection);
}

void CrowdWorker::on_run_activated(const CMSetDataRequest &request)
{
    const QVariantHash value = request.value().toHash();
    const int count = value.value(QStringLiteral("count")).toInt();
    const bool lastFirst = value.value(QStringLiteral("last")).toBool();
    m_run = request;
    m_running = true;
    m_refused = 0;
    m_refusalsMatter = true;
    m_elapsed.start();
    m_what = value.value(QStringLiteral("do")).toString();
    if (m_what == QLatin1String("queueSounds")) {
        queueSounds(count);
    } else if (m_what == QLatin1String("cancelSounds")) {
        cancelSounds(lastFirst);
    } else if (m_what == QLatin1String("openNodes")) {
        openNodes(count, false);
    } else if (m_what == QLatin1String("openShared")) {
        openNodes(count, true);
    } else if (m_what == QLatin1String("openMessages")) {
        openMessages(count);
    } else if (m_what == QLatin1String("closeAll")) {
        closeAll(lastFirst);
    } else if (m_what == QLatin1String("mix")) {
        mix(value.value(QStringLiteral("threads")).toInt(), count);
    } else if (m_what == QLatin1String("weigh")) {
        m_heapBefore = heapInUse();
    } else if (m_what == QLatin1String("weighAgain")) {
        m_heapGrowth = (heapInUse() - m_heapBefore) / 1024;
        m_heapGrowthAllowed = value.value(QStringLiteral("max")).toInt();
    }
    checkDone();
}

void CrowdWorker::queueSounds(int count)
{
    for (int i = 0; i < count; ++i) {
        const QString id = QStringLiteral("sound %1").arg(i);
        const auto item = sound(id, TavoNotificationPlayerItemType::Fake).setLoop(true);
        m_sounds.append(id);
        askFor(TavoNotificationPlayerEnqueuePath(), TavoValue().setNotificationPlayerItem(item));
    }
}

void CrowdWorker::cancelSounds(bool lastFirst)
{
    if (lastFirst) {
        std::reverse(m_sounds.begin(), m_sounds.end());
    }
    waitForResponses(m_sounds.size());
    for (const QString &id : qAsConst(m_sounds)) {
        askFor(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id));
    }
}

void CrowdWorker::openNodes(int count, bool shared)
{
    for (int i = 0; i < count; ++i) {
        const QString name = shared ? QStringLiteral("shared") : QString::number(i);
        const CMPath path = CMPath(QStringLiteral("/crowd/message")) + name;
        if (!shared || i == 0) {
            m_messages.append(CMListRowsNode::create(nodes(), path));
            m_open.append(path);
        }
        askFor(TavoNotificationDisplayOpenPath(),
               TavoValue().setNotificationDisplayItem(
                   TavoNotificationDisplayItem().setPath(path).setPriority(
                       TavoNotificationItemPriority::Enum(shared ? i % 4 : 0))));
    }
}

void CrowdWorker::openMessages(int count)
{
    for (int i = 0; i < count; ++i) {
        const auto item = TavoNotificationDisplayItem().setMessage("Somebody is at the door");
        ++m_answersAwaited;
        ask(this, TavoNotificationDisplayOpenPath(),
            TavoValue().setNotificationDisplayItem(item).__variant(),
            [this](const CMReply<QVariant> &reply) {
                m_open.append(TavoValue(reply.value().toHash()).path());
                m_refused += reply.error().isError() ? 1 : 0;
                --m_answersAwaited;
                checkDone();
            });
    }
}

void CrowdWorker::closeAll(bool lastFirst)
{
    if (lastFirst) {
        std::reverse(m_open.begin(), m_open.end());
    }
    for (const CMPath &path : qAsConst(m_open)) {
        askFor(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path));
    }
    m_open.clear();
}

void CrowdWorker::mix(int threads, int count)
{
    m_membersAwaited = threads;
    for (int i = 0; i < threads; ++i) {
        m_threads.push_back(std::make_unique<QThread>());
        m_members.push_back(std::make_unique<Member>(i, count));
        Member *member = m_members.back().get();
        member->moveToThread(m_threads.back().get());
        tavoConnect(member, &Member::done, this, &CrowdWorker::on_member_done,
                    Qt::QueuedConnection);
        m_threads.back()->start();
    }
    for (const auto &member : m_members) {
        QMetaObject::invokeMethod(member.get(), &Member::begin, Qt::QueuedConnection);
    }
}

void CrowdWorker::on_member_done()
{
    if (--m_membersAwaited > 0) {
        return;
    }
    // A surplus reply would arrive now, before what the threads are sent next.
    endThreads();
    m_refusalsMatter = false; // much has ended by itself
    for (const auto &member : m_members) {
        m_sounds += member->accepted();
        for (const CMPath &path : member->opened()) {
            askFor(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path));
        }
    }
    waitForResponses(m_sounds.size());
    for (const QString &id : qAsConst(m_sounds)) {
        askFor(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id));
    }
    checkDone();
}

void CrowdWorker::endThreads()
{
    for (std::size_t i = 0; i < m_threads.size(); ++i) {
        QMetaObject::invokeMethod(
            m_members[i].get(), [thread = m_threads[i].get()] { thread->quit(); },
            Qt::QueuedConnection);
        m_threads[i]->wait();
    }
    m_threads.clear();
}

void CrowdWorker::askFor(const CMPath &path, const TavoHash &value)
{
    ++m_answersAwaited;
    ask(this, path, value.__variant(), [this](const CMReply<QVariant> &reply) {
        m_refused += reply.error().isError() ? 1 : 0;
        --m_answersAwaited;
        checkDone();
    });
}

void CrowdWorker::on_response_activated(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    request.reply().setValue(QVariant());
    if (response.type() != TavoNotificationPlayerResponseType::Started) {
        ++m_ends[response.id()];
        checkDone();
    }
}

void CrowdWorker::checkDone()
{
    if (!m_running || m_answersAwaited > 0 || m_membersAwaited > 0 ||
        m_ends.size() < m_responsesAwaited) {
        return;
    }
    m_running = false;
    const QString wrong = complaint();
    LOG4CPLUS_INFO(logger, m_what << " took " << m_elapsed.elapsed() << " ms, refused " << m_refused
                                  << ", ended " << m_ends.size());
    if (m_responsesAwaited > 0) {
        m_sounds.clear();
        m_ends.clear();
        m_ends.squeeze();
        m_responsesAwaited = 0;
    }
    if (m_what == QLatin1String("closeAll")) {
        for (CMListRowsNode *node : qAsConst(m_messages)) {
            node->dispose();
        }
        m_messages.clear();
    }
    m_members.clear();
    m_heapGrowth = 0;
    if (wrong.isEmpty()) {
        m_run.reply().setValue(QVariant());
    } else {
        m_run.reply().setError(CMError(QStringLiteral("Crowd"), wrong));
    }
    m_run = CMSetDataRequest();
}

QString CrowdWorker::complaint() const
{
    QStringList wrong;
    if (m_heapGrowth > m_heapGrowthAllowed) {
        wrong += QStringLiteral("%1 KiB more are in use").arg(m_heapGrowth);
    }
    if (m_refusalsMatter && m_refused > 0) {
        wrong += QStringLiteral("%1 requests were refused").arg(m_refused);
    }
    for (auto end = m_ends.cbegin(); end != m_ends.cend(); ++end) {
        if (end.value() != 1) {
            wrong += QStringLiteral("%1 ended %2 times").arg(end.key()).arg(end.value());
        }
    }
    for (const auto &member : m_members) {
        if (!member->wasAnsweredOnceEach()) {
            wrong += QStringLiteral("a request wasn't answered exactly once");
        }
    }
    return wrong.join(QStringLiteral(", "));
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char * /*name*/, void *config)
{
    CMWorker *worker = new CrowdWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}

#include "crowd.moc"
