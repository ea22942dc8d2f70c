// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <core/tavo.h>

#include <QHash>
#include <QStringList>

#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

// A worker that stands in for the services which the notifications use. It leaves requests
// unanswered, so a test can hold the audio sequence in any state. The kinds of requests are
// "register", "acquire", "release", "duck" and "unduck". For each request it logs "keeping KIND",
// "refusing KIND" or "answering KIND" under "StandIn". Configuration:
//
//   powerManager    whether it takes registrations and requests for resources
//   player          whether it takes requests to duck, and names a device
//   device          the device for notifications that the player names
//   keep            kinds that are kept without a reply
//   refuse          kinds that are refused
//   responseWaits   a FIFO that /standIn/NAME/response waits for, once, inside the call
//
// The node /standIn/NAME/answer answers all kept requests of the kind in its value, and from then
// on keeps no request of that kind.

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("StandIn");

void waitForFifo(const QString &path)
{
    // Opening a FIFO blocks until the other end is opened.
    const int descriptor = open(path.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw std::runtime_error("no FIFO to wait for");
    }
    close(descriptor);
}

class StandInWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    StandInWorker(const QString &name, const QVariantHash &config);

private Q_SLOTS:
    void on_register_activated(const CMSetDataRequest &request);
    void on_resource_activated(const CMSetDataRequest &request);
    void on_ducking_activated(const CMSetDataRequest &request);
    void on_answer_activated(const CMSetDataRequest &request);
    void on_response_activated(const CMSetDataRequest &request);

private:
    using Slot = void (StandInWorker::*)(const CMSetDataRequest &);

    void bind(const CMPath &path, Slot slot, Qt::ConnectionType type = Qt::QueuedConnection);
    void handle(const QString &kind, const CMSetDataRequest &request);
    static void answer(const QString &kind, const CMSetDataRequest &request);

    QStringList m_keep;
    const QStringList m_refuse;
    QString m_responseWaits; // used by the thread that comes first; only one does
    QHash<QString, QList<CMSetDataRequest>> m_kept;
};

StandInWorker::StandInWorker(const QString &name, const QVariantHash &config)
    : CMNodesWorker(config, name)
    , m_keep(config.value(QStringLiteral("keep")).toStringList())
    , m_refuse(config.value(QStringLiteral("refuse")).toStringList())
    , m_responseWaits(config.value(QStringLiteral("responseWaits")).toString())
{
    const CMPath own = CMPath(QStringLiteral("/standIn")) + name;
    bind(own + QStringLiteral("/answer"), &StandInWorker::on_answer_activated);
    bind(own + QStringLiteral("/response"), &StandInWorker::on_response_activated,
         Qt::DirectConnection);
    if (config.value(QStringLiteral("powerManager")).toBool()) {
        bind(TavoPowerManagerModuleRegisterPath(), &StandInWorker::on_register_activated);
        bind(TavoPowerManagerResourceRequestPath(), &StandInWorker::on_resource_activated);
    }
    if (config.value(QStringLiteral("player")).toBool()) {
        bind(TavoPlayerMainAudioDuckingPath(), &StandInWorker::on_ducking_activated);
        const QString device = config.value(QStringLiteral("device")).toString();
        CMValueNode::create(nodes(), TavoPlayerAlsaDeviceNotificationsPath())
            ->setValue(TavoValue().setAudioDevice(TavoPlayerAudioDevice().setDevice(device)));
    }
}

void StandInWorker::bind(const CMPath &path, Slot slot, Qt::ConnectionType type)
{
    CMActivateNode::create(nodes(), path)->setInvoke(this, slot, type);
}

void StandInWorker::on_register_activated(const CMSetDataRequest &request)
{
    handle(QStringLiteral("register"), request);
}

void StandInWorker::on_resource_activated(const CMSetDataRequest &request)
{
    const TavoPowerManagerResourceRequest record(request.value().toHash());
    const bool acquire = record.action() == TavoPowerModuleActions::Acquire;
    handle(acquire ? QStringLiteral("acquire") : QStringLiteral("release"), request);
}

void StandInWorker::on_ducking_activated(const CMSetDataRequest &request)
{
    const TavoPlayerAudioDuckingRequest record(request.value().toHash());
    handle(record.duckAudio() ? QStringLiteral("duck") : QStringLiteral("unduck"), request);
}

void StandInWorker::on_answer_activated(const CMSetDataRequest &request)
{
    const QString kind = TavoValue(request.value().toHash()).string_();
    m_keep.removeAll(kind);
    for (const CMSetDataRequest &kept : m_kept.take(kind)) {
        answer(kind, kept);
    }
    request.reply().setValue(QVariant());
}

// Called in the thread that responds.
void StandInWorker::on_response_activated(const CMSetDataRequest &request)
{
    const QString fifo = std::exchange(m_responseWaits, QString());
    if (!fifo.isEmpty()) {
        LOG4CPLUS_INFO(logger, "holding a response");
        waitForFifo(fifo);
    }
    request.reply().setValue(QVariant());
}

void StandInWorker::handle(const QString &kind, const CMSetDataRequest &request)
{
    if (m_keep.contains(kind)) {
        m_kept[kind].append(request);
        LOG4CPLUS_INFO(logger, "keeping " << kind.toStdString());
    } else if (m_refuse.contains(kind)) {
        LOG4CPLUS_INFO(logger, "refusing " << kind.toStdString());
        request.reply().setError(CMError(QStringLiteral("StandIn"), QStringLiteral("Refused")));
    } else {
        answer(kind, request);
    }
}

void StandInWorker::answer(const QString &kind, const CMSetDataRequest &request)
{
    LOG4CPLUS_INFO(logger, "answering " << kind.toStdString());
    request.reply().setValue(QVariant());
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    CMWorker *worker =
        new StandInWorker(QString::fromUtf8(name), *static_cast<const QVariantHash *>(config));
    return worker;
}

#include "stand_in.moc"
