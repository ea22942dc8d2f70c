// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoakWorker.h"

#include "Actions.h"
#include "Requests.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <fcntl.h>
#include <malloc.h>
#include <stdexcept>
#include <thread>

namespace {
constexpr int timeoutMs = 10000;
constexpr int minPulseMs = 5;
constexpr int maxPulseMs = 60;
constexpr int lullShare = 5;   // percent of the pulses
constexpr int maxLullMs = 300; // the audio sequence ends after 100

Planted plantedOf(const QString &text)
{
    const QStringList names = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    const auto has = [&names](const char *name) { return names.contains(QLatin1String(name)); };
    return {has("memory"), has("descriptors"), has("threads"), has("answer"), has("sound")};
}

CMPath revokePath(int number)
{
    return CMPath(QStringLiteral("/soak/revoke/%1").arg(number));
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    CMWorker *worker =
        new SoakWorker(QString::fromUtf8(name), *static_cast<const QVariantHash *>(config));
    return worker;
}

SoakWorker::SoakWorker(const QString &name, const QVariantHash &config)
    : CMNodesWorker(config, name)
{
    readConfiguration(config);
    m_dice = std::make_unique<Dice>(m_seed + 1000);
    m_feeder = new Feeder(m_situation, *m_dice, this);
    m_settling = new Settling(m_situation, this);
    m_socket.connectToServer(m_socketName);
    if (!m_socket.waitForConnected(timeoutMs)) {
        throw std::runtime_error("nobody listens at " + m_socketName.toStdString());
    }
    m_pulse.setSingleShot(true);
    m_statusTimer.setInterval(m_statusMs);
    tavoConnect(&m_socket, &QLocalSocket::readyRead, this, &SoakWorker::on_socket_readyRead);
    tavoConnect(&m_pulse, &QTimer::timeout, this, &SoakWorker::on_pulse_timeout);
    tavoConnect(&m_statusTimer, &QTimer::timeout, this, &SoakWorker::on_statusTimer_timeout);
    tavoConnect(m_settling, &Settling::settled, this, &SoakWorker::on_settling_settled);
    publishNodes();
    m_threads = std::make_unique<LoadThreads>(m_situation, m_threadCount, m_seed);
    tell(QStringLiteral("ready"));
}

SoakWorker::~SoakWorker()
{
    m_threads.reset();
}

void SoakWorker::readConfiguration(const QVariantHash &config)
{
    TavoConfiguration configuration(config);
    m_socketName = configuration.string(QStringLiteral("socket"), {});
    m_situation.sounds = configuration.string(QStringLiteral("sounds"), {});
    m_situation.http = configuration.string(QStringLiteral("http"), {});
    m_situation.planted = plantedOf(configuration.string(QStringLiteral("planted"), {}));
    m_seed = std::uint64_t(
        configuration.integer(QStringLiteral("seed"), 1, 0, std::numeric_limits<int>::max()));
    m_threadCount = configuration.integer(QStringLiteral("threads"), 3, 1, 64);
    // Measured by the host's clock, which may run faster.
    m_statusMs = configuration.integer(QStringLiteral("statusMs"), m_statusMs, 1, 1'000'000);
    configuration.finish();
}

void SoakWorker::publishNodes()
{
    const auto bind = [this](const CMPath &path,
                             void (SoakWorker::*slot)(const CMSetDataRequest &)) {
        CMActivateNode::create(nodes(), path)->setInvoke(this, slot, Qt::QueuedConnection);
    };
    bind(Actions::responsePath(), &SoakWorker::on_response_activated);
    bind(Actions::echoPath(), &SoakWorker::on_echo_activated);
    for (int i = 0; i < Actions::sharedCount; ++i) {
        CMListRowsNode::create(nodes(), Actions::sharedPath(i));
    }
    for (int i = 0; i < Actions::moduleCount; ++i) {
        bind(revokePath(i), &SoakWorker::on_revoke_activated);
        sendRequest(m_situation.ledger, RequestKind::Register, TavoPowerManagerModuleRegisterPath(),
                    TavoPowerManagerModuleRegister()
                        .setModuleName(Actions::moduleName(i))
                        .setRevokeResourcesPath(revokePath(i))
                        .setPostRevokeResourcesPath(revokePath(i))
                        .__variant());
    }
    for (int i = 0; i < Actions::vanishingCount; ++i) {
        publishVanishing(i);
    }
    CMRoot()->connectRowsChange(TavoNotificationDisplayQueuePath(), this,
                                &SoakWorker::on_queue_rowsChanged);
}

void SoakWorker::publishVanishing(int number)
{
    auto *node = CMActivateNode::create(nodes(), Actions::vanishingPath(number));
    node->setInvoke(this, &SoakWorker::on_vanishing_activated, Qt::QueuedConnection);
    m_vanishing[std::size_t(number)] = node;
}

void SoakWorker::on_socket_readyRead()
{
    while (m_socket.canReadLine()) {
        const QJsonObject line = QJsonDocument::fromJson(m_socket.readLine()).object();
        if (line[QStringLiteral("do")] == QLatin1String("load")) {
            load();
        } else {
            rest();
        }
    }
}

void SoakWorker::load()
{
    m_loading = true;
    m_situation.lull = false;
    m_statusTimer.start();
    m_pulse.start(minPulseMs);
    if (m_situation.lastId <= 1) {
        Actions(m_situation, m_seed).warmUp();
    }
    m_threads->start();
}

void SoakWorker::rest()
{
    m_loading = false;
    m_threads->rest();
    m_pulse.stop();
    m_feeder->rest();
    if (m_situation.planted.sound) {
        sendSound(m_situation.ledger,
                  TavoNotificationPlayerItem()
                      .setId(QStringLiteral("o-stuck%1").arg(++m_situation.lastId))
                      .setType(TavoNotificationPlayerItemType::Fake)
                      .setLoop(true)
                      .setPlaybackResponsePath(Actions::responsePath()),
                  true);
    }
    m_settling->start();
    m_statusTimer.start();
}

// Sometimes does something that only this thread can do.
void SoakWorker::on_pulse_timeout()
{
    plant();
    if (m_dice->percent(lullShare) && !m_situation.lull) {
        m_situation.lull = true;
        m_pulse.start(m_dice->number(minPulseMs, maxLullMs));
        return;
    }
    m_situation.lull = false;
    const int number = m_dice->number(0, Actions::vanishingCount - 1);
    CMActivateNode *&node = m_vanishing[std::size_t(number)];
    if (node == nullptr) {
        publishVanishing(number);
    } else {
        std::exchange(node, nullptr)->dispose();
        m_situation.ledger.count(QStringLiteral("response nodes that went"));
    }
    m_pulse.start(m_dice->number(minPulseMs, maxPulseMs));
}

void SoakWorker::plant()
{
    const Planted &planted = m_situation.planted;
    if (planted.memory) {
        m_leaked = new std::array<char, 64>; // NOLINT: what is planted is a leak
    }
    if (planted.descriptors) {
        static_cast<void>(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
    if (planted.threads && m_dice->percent(2)) {
        std::thread([] { std::this_thread::sleep_for(std::chrono::hours(100)); }).detach();
    }
}

void SoakWorker::on_statusTimer_timeout()
{
    tellViolations();
    tell(QStringLiteral("status"),
         {{QStringLiteral("progress"), m_situation.ledger.progress()},
          {QStringLiteral("loading"), m_loading},
          {QStringLiteral("awaited"), m_settling->isActive() ? m_settling->awaited() : QString()},
          {QStringLiteral("unanswered"), m_situation.ledger.unanswered()},
          {QStringLiteral("figures"), m_situation.ledger.figures()},
          {QStringLiteral("actions"), QJsonArray::fromStringList(m_situation.actions.last())}});
}

void SoakWorker::on_settling_settled()
{
    m_statusTimer.stop();
    tellViolations();
    // Makes missing nodes again, so that all quiet points are alike.
    for (int i = 0; i < Actions::vanishingCount; ++i) {
        if (m_vanishing[std::size_t(i)] == nullptr) {
            publishVanishing(i);
        }
    }
    tell(QStringLiteral("settled"));
    // After all that is to be deleted later.
    QTimer::singleShot(0, this, [this] {
        tell(QStringLiteral("quiet"), {{QStringLiteral("heap"), qint64(mallinfo2().uordblks)},
                                       {QStringLiteral("mapped"), qint64(mallinfo2().hblkhd)},
                                       {QStringLiteral("figures"), m_situation.ledger.figures()}});
    });
}

void SoakWorker::on_response_activated(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    m_situation.ledger.soundResponded(response.id(), response.type());
    if (response.type() == TavoNotificationPlayerResponseType::Started && m_loading) {
        m_feeder->feed(response.id());
    }
    answerLater(request.reply(), 10);
}

void SoakWorker::on_vanishing_activated(const CMSetDataRequest &request)
{
    answerLater(request.reply(), 10);
}

// With the planted fault, one in a hundred requests is never answered.
void SoakWorker::on_echo_activated(const CMSetDataRequest &request)
{
    if (m_situation.planted.answer && m_dice->percent(1)) {
        m_kept.push_back(request.reply());
        return;
    }
    answerLater(request.reply(), 30);
}

void SoakWorker::on_revoke_activated(const CMSetDataRequest &request)
{
    m_situation.ledger.count(QStringLiteral("revoke messages taken by other modules"));
    // Some replies take longer than the power manager waits.
    answerLater(request.reply(), 150);
}

void SoakWorker::answerLater(const CMReply<QVariant> &reply, int maxDelayMs)
{
    const int kind = m_dice->number(0, 9);
    if (kind == 0) {
        return; // dropped: the requester gets an error
    }
    if (kind < 7) {
        reply.setValue(QVariant());
        return;
    }
    QTimer::singleShot(m_dice->number(0, maxDelayMs), this,
                       [reply] { reply.setValue(QVariant()); });
}

void SoakWorker::on_queue_rowsChanged(const CMPath & /*path*/, const QStringList &changes,
                                      int /*first*/, int /*count*/)
{
    m_situation.ledger.rowsChanged(changes);
}

void SoakWorker::tellViolations()
{
    for (const QString &what : m_situation.ledger.takeViolations()) {
        tell(QStringLiteral("violation"),
             {{QStringLiteral("what"), what},
              {QStringLiteral("actions"), QJsonArray::fromStringList(m_situation.actions.last())}});
    }
}

void SoakWorker::tell(const QString &event, QJsonObject details)
{
    details.insert(QStringLiteral("event"), event);
    m_socket.write(QJsonDocument(details).toJson(QJsonDocument::Compact) + '\n');
    m_socket.flush();
}
