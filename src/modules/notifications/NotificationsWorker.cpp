// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationsWorker.h"

#include "NotificationDisplay.h"
#include "NotificationPlayer.h"

static log4cplus::Logger logger = log4cplus::Logger::getInstance("Notifications");

namespace {
/// The start of every entry line.
std::string entered(const char *signature)
{
    return "Enter " + dbglog_scopedFunction(signature, "Notifications") + ": ";
}

TavoValue valueOf(const CMSetDataRequest &request)
{
    return {TavoHash(request.value().toHash())};
}

/// The error of every refused request.
CMError failure(const TrString &message)
{
    return {QStringLiteral("Notifications"), message};
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    LOG4CPLUS_TRACE(logger, entered(Q_FUNC_INFO) << "name: " << (name != nullptr ? name : ""));
    return new NotificationsWorker(*static_cast<const QVariantHash *>(config));
}

NotificationsWorker::NotificationsWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Notifications"))
{
    LOG4CPLUS_TRACE(logger, entered(Q_FUNC_INFO));
    const auto bind = [this](const CMPath &path,
                             void (NotificationsWorker::*slot)(const CMSetDataRequest &)) {
        CMActivateNode::create(nodes(), path)->setInvoke(this, slot, Qt::QueuedConnection);
    };
    bind(TavoNotificationPlayerEnqueuePath(),
         &NotificationsWorker::on_notificationPlayerEnqueue_activated);
    bind(TavoNotificationPlayerCancelPath(),
         &NotificationsWorker::on_notificationPlayerCancel_activated);
    bind(TavoNotificationDisplayOpenPath(),
         &NotificationsWorker::on_notificationDisplayEnqueue_activated);
    bind(TavoNotificationDisplayCancelNotifyPath(),
         &NotificationsWorker::on_notificationDisplayCancel_activated);

    m_notificationDisplay = new NotificationDisplay(nodes(), this);
    m_notificationPlayer = new NotificationPlayer(nodes(), this);
}

void NotificationsWorker::on_notificationPlayerEnqueue_activated(const CMSetDataRequest &request)
{
    LOG4CPLUS_DEBUG(logger, entered(Q_FUNC_INFO) << "item: " << request.value());
    const TavoNotificationPlayerItem record = valueOf(request).notificationPlayerItem();
    NotificationPlayerItem item;
    item.content = record.content();
    item.contentStreamFormat = record.contentStreamFormat();
    item.type = record.type();
    item.priority = record.priority();
    item.id = record.id();
    item.playbackResponsePath = record.playbackResponsePath();
    item.loop = record.loop();
    item.attenuation = record.attenuation();
    if (!m_notificationPlayer->enqueue(item)) {
        request.reply().setError(failure(TAVO_TR("Failed to enqueue sound notification")));
        return;
    }
    request.reply().setValue(QVariant());
}

void NotificationsWorker::on_notificationPlayerCancel_activated(const CMSetDataRequest &request)
{
    if (!m_notificationPlayer->cancel(valueOf(request).string_())) {
        request.reply().setError(failure("Invalid notification sound id to stop"));
        return;
    }
    request.reply().setValue(QVariant());
}

void NotificationsWorker::on_notificationDisplayEnqueue_activated(const CMSetDataRequest &req)
{
    LOG4CPLUS_TRACE(logger, entered(Q_FUNC_INFO) << req.value());
    TavoNotificationDisplayItem item = valueOf(req).notificationDisplayItem();
    if (!m_notificationDisplay->enqueue(&item)) {
        req.reply().setError(failure(TAVO_TR("Failed to enqueue notification")));
        return;
    }
    req.reply().setValue(TavoValue(TavoHash()).setPath(item.path()).__variant());
}

void NotificationsWorker::on_notificationDisplayCancel_activated(const CMSetDataRequest &req)
{
    LOG4CPLUS_TRACE(logger, entered(Q_FUNC_INFO) << req.value());
    CMPath path = valueOf(req).path();
    if (path.isEmpty()) {
        path = CMPath::fromQVariant(req.value());
    }
    if (path.isEmpty()) {
        req.reply().setError(failure(TAVO_TR("Path to close empty")));
        return;
    }
    if (!m_notificationDisplay->cancel(path)) {
        req.reply().setError(failure(TAVO_TR("Node already closed or non-existent")));
        return;
    }
    req.reply().setValue(true);
}
