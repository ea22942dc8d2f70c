// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DoorbellWorker.h"

#include "Button.h"

static log4cplus::Logger logger = log4cplus::Logger::getInstance("Doorbell");

/// The host calls this once, in the thread in which the worker will live.
TAVO_MODULE_EXPORT void *worker_create(const char * /*name*/, void *config)
{
    return new DoorbellWorker(*static_cast<const QVariantHash *>(config));
}

DoorbellWorker::DoorbellWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Doorbell"))
{
    // A wrong type, a number out of range or an unknown key throws, and the host reports it.
    TavoConfiguration configuration(config);
    m_sound = configuration.string(QStringLiteral("sound"), QString());
    m_text = configuration.string(QStringLiteral("text"), QStringLiteral("Somebody rings"));
    m_timeoutMs = configuration.integer(QStringLiteral("timeout"), 10000, 0, 600000);
    const QString device = configuration.string(QStringLiteral("button"), QString());
    configuration.finish();

    // A command that others can call, and a value that they can read and subscribe to.
    const CMPath path(QStringLiteral("/doorbell"));
    CMActivateNode *ringNode = CMActivateNode::create(nodes(), path + QStringLiteral("ring"));
    ringNode->setInvoke(this, &DoorbellWorker::on_ring_activated, Qt::QueuedConnection);
    m_rings = CMValueNode::create(nodes(), path + QStringLiteral("rings"));
    m_rings->setValue(TavoValue().setInt_(0));

    // The notifications module reports here how the sound starts and ends.
    CMActivateNode *response = CMActivateNode::create(nodes(), path + QStringLiteral("response"));
    response->setInvoke(this, &DoorbellWorker::on_response_activated, Qt::QueuedConnection);
    m_responsePath = response->path();

    if (!device.isEmpty()) {
        auto *button = new Button(device, this);
        tavoConnect(button, &Button::pressed, this, &DoorbellWorker::on_button_pressed);
        tavoConnect(button, &Button::lost, this, &DoorbellWorker::on_button_lost);
    }
}

void DoorbellWorker::on_button_pressed()
{
    ring();
}

void DoorbellWorker::on_button_lost()
{
    LOG4CPLUS_ERROR(logger, "The button's device has gone");
}

void DoorbellWorker::on_ring_activated(const CMSetDataRequest &request)
{
    // The request is answered when the display has replied: the copy keeps it open until then.
    ring().onFinished(this, [request](const CMReply<QVariant> &shown) {
        if (shown.error().isError()) {
            request.reply().setError(shown.error());
        } else {
            request.reply().setValue(QVariant());
        }
    });
}

CMReply<QVariant> DoorbellWorker::ring()
{
    LOG4CPLUS_INFO(logger, "Somebody rings");
    m_rings->setValue(TavoValue().setInt_(++m_ringCount));
    playSound();
    const auto message = TavoNotificationDisplayItem()
                             .setTitle(QStringLiteral("Door"))
                             .setMessage(m_text)
                             .setTimeout(m_timeoutMs)
                             .setPriority(TavoNotificationItemPriority::High);
    const CMReply<QVariant> opened =
        CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                         TavoValue().setNotificationDisplayItem(message), CMReply<QVariant>());
    opened.onFinished(this, [this](const CMReply<QVariant> &reply) {
        if (!reply.error().isError()) {
            replaceMessage(TavoValue(reply.value().toHash()).path());
        }
    });
    return opened;
}

void DoorbellWorker::replaceMessage(const CMPath &message)
{
    // The reply says whether the message was still there, which makes no difference.
    if (!m_message.isEmpty()) {
        CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(m_message),
                         CMReply<QVariant>());
    }
    m_message = message;
}

void DoorbellWorker::playSound()
{
    if (m_sound.isEmpty() || m_isSounding) {
        return;
    }
    const auto sound = TavoNotificationPlayerItem()
                           .setId(QStringLiteral("doorbell"))
                           .setContent(m_sound)
                           .setPriority(TavoNotificationItemPriority::High)
                           .setPlaybackResponsePath(m_responsePath);
    m_isSounding = true;
    const CMReply<QVariant> queued =
        CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                         TavoValue().setNotificationPlayerItem(sound), CMReply<QVariant>());
    queued.onFinished(this, [this](const CMReply<QVariant> &reply) {
        if (reply.error().isError()) {
            m_isSounding = false;
            LOG4CPLUS_ERROR(logger, "No sound: " << reply.error().message().toString());
        }
    });
}

void DoorbellWorker::on_response_activated(const CMSetDataRequest &request)
{
    const auto response = TavoValue(request.value().toHash()).notificationPlayerResponse();
    request.reply().setValue(QVariant());
    if (response.type() != TavoNotificationPlayerResponseType::Started) {
        m_isSounding = false;
    }
}
