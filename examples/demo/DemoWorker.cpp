// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DemoWorker.h"

#include <QCoreApplication>
#include <QFile>
#include <QTimer>

static log4cplus::Logger logger = log4cplus::Logger::getInstance("Demo");

TAVO_MODULE_EXPORT void *worker_create(const char * /*name*/, void *config)
{
    return new DemoWorker(*static_cast<const QVariantHash *>(config));
}

DemoWorker::DemoWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Demo"))
{
    // If a value can't be read, the host reports the key, and starts nothing.
    TavoConfiguration configuration(config);
    m_sounds = configuration.string(QStringLiteral("sounds"), QStringLiteral("."));
    m_timeline = new Timeline(configuration.string(QStringLiteral("timeline"), {}), this);
    m_stays = configuration.boolean(QStringLiteral("stays"), false);
    configuration.finish();

    // A node of this module, to which the notifications module reports how each sound starts and
    // ends.
    CMActivateNode *response =
        CMActivateNode::create(nodes(), CMPath(QStringLiteral("/demo/response")));
    response->setInvoke(this, &DemoWorker::on_response_activated, Qt::QueuedConnection);
    m_responsePath = response->path();

    // Nodes of other modules: a subscription needs only their paths.
    CMRoot()->connectValueChange(TavoPlayerMainAudioStatePath(), this,
                                 &DemoWorker::on_mainAudioState_changed);
    CMRoot()->connectValueChange(TavoPowerManagerStatePath(), this,
                                 &DemoWorker::on_powerManagerState_changed);

    m_script = new Script(m_timeline, this);
    writeScript();
    new DisplayScript(nodes(), m_timeline, this);
    QTimer::singleShot(0, this, [this] { happened(QStringLiteral("begun")); });
}

void DemoWorker::writeScript()
{
    using Type = TavoNotificationPlayerItemType;

    // A file. When the music is restored, a sound in base64.
    m_script->step("begun", 1500, [this] {
        enqueue(sound(QStringLiteral("chime"), Type::Uri, file(QStringLiteral("chime.flac"))));
    });
    m_script->step("restored", 1000, [this] {
        enqueue(sound(QStringLiteral("message"), Type::Data,
                      textOf(file(QStringLiteral("message.base64")))));
    });

    // Right after it, a stream: raw samples that somebody writes to a FIFO.
    m_script->step("ended message", 0, [this] {
        enqueue(sound(QStringLiteral("stream"), Type::Stream, file(QStringLiteral("stream.fifo")))
                    .setContentStreamFormat(QStringLiteral("audio/L16;rate=48000;channels=1")));
    });

    // A long sound. An urgent one interrupts it, then it continues.
    m_script->step("restored", 1000, [this] {
        enqueue(sound(QStringLiteral("announcement"), Type::Uri,
                      file(QStringLiteral("announcement.wav"))));
    });
    m_script->step("started announcement", 1500, [this] {
        enqueue(sound(QStringLiteral("alarm"), Type::Uri, file(QStringLiteral("alarm.wav")))
                    .setPriority(TavoNotificationItemPriority::Urgent));
    });

    // A loop, which is cancelled, and two sounds that fail: one of an invalid type, one whose file
    // is missing.
    m_script->step("ended announcement", 0, [this] {
        enqueue(sound(QStringLiteral("ring"), Type::Uri, file(QStringLiteral("ring.ogg")))
                    .setLoop(true));
    });
    m_script->step("started ring", 2500, [this] { cancel(QStringLiteral("ring")); });
    m_script->step("ended ring", 0, [this] {
        enqueue(sound(QStringLiteral("invalid"), Type::Enum(42), QString()));
        enqueue(sound(QStringLiteral("missing"), Type::Uri, file(QStringLiteral("nowhere.wav"))));
    });

    // The music should be heard again before the end.
    m_script->step("restored", 2000, [this] {
        happened(QStringLiteral("over"));
        if (!m_stays) {
            QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
        }
    });
}

void DemoWorker::happened(const QString &event, const QString &id, const QString &kind)
{
    QJsonObject details;
    if (!id.isEmpty()) {
        details.insert(QStringLiteral("id"), id);
    }
    if (!kind.isEmpty()) {
        details.insert(QStringLiteral("kind"), kind);
    }
    m_timeline->note(event, details);
}

TavoNotificationPlayerItem DemoWorker::sound(const QString &id,
                                             TavoNotificationPlayerItemType::Enum type,
                                             const QString &content) const
{
    return TavoNotificationPlayerItem()
        .setId(id)
        .setType(type)
        .setContent(content)
        .setPriority(TavoNotificationItemPriority::Normal)
        .setPlaybackResponsePath(m_responsePath);
}

QString DemoWorker::file(const QString &name) const
{
    return m_sounds + QLatin1Char('/') + name;
}

QString DemoWorker::textOf(const QString &fileName)
{
    QFile text(fileName);
    if (!text.open(QIODevice::ReadOnly)) {
        LOG4CPLUS_ERROR(logger, "Can't read " << fileName << ": " << text.errorString());
    }
    return QString::fromLatin1(text.readAll());
}

void DemoWorker::enqueue(const TavoNotificationPlayerItem &item)
{
    happened(QStringLiteral("sent"), item.id());
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                     TavoValue().setNotificationPlayerItem(item), reply);
    reply.onFinished(this, [this, id = item.id()](const CMReply<QVariant> &answer) {
        if (answer.error().isError()) {
            LOG4CPLUS_WARN(logger,
                           "Refused: " << id << ", " << answer.error().message().toString());
        }
        happened(answer.error().isError() ? QStringLiteral("refused") : QStringLiteral("queued"),
                 id);
    });
}

void DemoWorker::cancel(const QString &id)
{
    happened(QStringLiteral("cancelling"), id);
    CMRoot()->invoke(TavoNotificationPlayerCancelPath(), TavoValue().setString_(id),
                     CMReply<QVariant>());
}

void DemoWorker::on_response_activated(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    request.reply().setValue(QVariant());
    if (response.type() == TavoNotificationPlayerResponseType::Started) {
        happened(QStringLiteral("started"), response.id());
    } else {
        happened(QStringLiteral("ended"), response.id(),
                 TavoNotificationPlayerResponseType::toString(response.type()).toLower());
    }
}

void DemoWorker::on_mainAudioState_changed(const CMPath & /*path*/, const QVariant &value)
{
    const bool ducked = TavoValue(value.toHash()).mainAudioState().ducked();
    if (ducked != m_ducked) {
        m_ducked = ducked;
        happened(ducked ? QStringLiteral("ducked") : QStringLiteral("restored"));
    }
}

void DemoWorker::on_powerManagerState_changed(const CMPath & /*path*/, const QVariant &value)
{
    const auto resources = TavoValue(value.toHash()).powerManagerState().resources();
    bool acquired = false;
    for (int i = 0; i < resources.size(); ++i) {
        acquired = acquired || resources.at(i).resource() == TavoPowerManagerResources::Audio;
    }
    if (acquired != m_acquired) {
        m_acquired = acquired;
        happened(acquired ? QStringLiteral("acquired") : QStringLiteral("released"));
    }
}
