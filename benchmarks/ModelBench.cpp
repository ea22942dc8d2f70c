// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelBench.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLibrary>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>

namespace {
CMWorker *makeWorker(QVariantHash *config)
{
    using WorkerCreate = void *(*)(const char *, void *);
    static QLibrary library(QStringLiteral(TAVO_NOTIFICATIONS_MODULE));
    static const auto create = reinterpret_cast<WorkerCreate>(library.resolve("worker_create"));
    if (create == nullptr) {
        qFatal("%s", qPrintable(library.errorString()));
    }
    return static_cast<CMWorker *>(create("notifications", config));
}

/// Mixed values, so that new items go anywhere in the queue.
TavoNotificationItemPriority::Enum priorityOf(int number)
{
    return TavoNotificationItemPriority::Enum((number * 7) % 4);
}
} // namespace

BenchServices::BenchServices()
    : CMNodesWorker({}, QStringLiteral("Services"))
{
    for (const CMPath &path :
         {TavoPlayerMainAudioDuckingPath(), TavoPowerManagerResourceRequestPath(),
          TavoPowerManagerModuleRegisterPath()}) {
        CMActivateNode::create(nodes(), path)
            ->setInvoke(this, &BenchServices::on_held, Qt::DirectConnection);
    }
    CMActivateNode::create(nodes(), floorPath())
        ->setInvoke(this, &BenchServices::on_floor, Qt::QueuedConnection);
}

CMPath BenchServices::floorPath()
{
    static const CMPath path(QStringLiteral("/benchmark/player/nothing"));
    return path;
}

void BenchServices::on_held(const CMSetDataRequest &request)
{
    m_held.push_back(request);
}

void BenchServices::on_floor(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
}

BenchModule::BenchModule(Place place)
{
    if (place == Place::OwnThread) {
        m_context.moveToThread(&m_thread);
        m_thread.start();
    }
    inItsThread([this] { m_services = std::make_unique<BenchServices>(); });
    restart();
}

BenchModule::~BenchModule()
{
    inItsThread([this] {
        m_worker.reset();
        m_services.reset();
        m_context.moveToThread(nullptr);
    });
    m_thread.quit();
    m_thread.wait();
}

void BenchModule::restart()
{
    inItsThread([this] {
        m_worker.reset();
        m_services->drop();
        QCoreApplication::processEvents();
        // There is no event loop to delete these, and each pass would look at them again.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_worker.reset(makeWorker(&m_config));
        QCoreApplication::processEvents();
    });
}

void BenchModule::inItsThread(const std::function<void()> &function)
{
    if (m_thread.isRunning()) {
        QMetaObject::invokeMethod(&m_context, function, Qt::BlockingQueuedConnection);
    } else {
        function();
    }
}

CMReply<QVariant> BenchModule::request(const CMPath &path, const TavoValue &value) const
{
    const CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    if (m_thread.isRunning()) {
        reply.waitForFinished();
        return reply;
    }
    while (!reply.isFinished()) {
        QCoreApplication::processEvents();
    }
    return reply;
}

TavoValue soundRequest(int number)
{
    return TavoValue().setNotificationPlayerItem(
        TavoNotificationPlayerItem()
            .setId(QStringLiteral("sound-") + QString::number(number))
            .setContent(QStringLiteral("file:///usr/share/sounds/chime-%1.wav").arg(number))
            .setType(TavoNotificationPlayerItemType::Uri)
            .setPriority(priorityOf(number))
            .setLoop(false)
            .setPlaybackResponsePath(BenchServices::floorPath()));
}

TavoValue soundCancelRequest(int number)
{
    return TavoValue().setString_(QStringLiteral("sound-") + QString::number(number));
}

TavoValue messageRequest(int number)
{
    return TavoValue().setNotificationDisplayItem(
        TavoNotificationDisplayItem()
            .setId(QStringLiteral("message-") + QString::number(number))
            .setTitle(QStringLiteral("The door"))
            .setMessage(QStringLiteral("Somebody is at the door"))
            .setTimeout(5000)
            .setPriority(priorityOf(number)));
}

TavoValue displayCancelRequest(const CMPath &path)
{
    return TavoValue().setPath(path);
}

std::vector<int> shuffled(int count)
{
    std::vector<int> numbers(std::size_t(count), 0);
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return numbers;
}
