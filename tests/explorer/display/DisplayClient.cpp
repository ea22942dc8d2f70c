// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayClient.h"

#include <stdexcept>

namespace {
QVariantList readRows(const CMPath &path, CMError *error)
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
    *error = reply.error();
    return reply.value().toList();
}
} // namespace

DisplayClient::DisplayClient(ModuleHost *host)
    : m_log("Notifications", log4cplus::WARN_LOG_LEVEL)
    , m_worker(host->makeWorker())
{
    for (QObject *child : m_worker->children()) {
        if (qstrcmp(child->metaObject()->className(), "NotificationDisplay") == 0) {
            m_closeTimer = child->findChild<QTimer *>();
        }
    }
    if (m_closeTimer == nullptr) {
        throw std::logic_error("the display has no timer");
    }
    takeLog();
}

CMReply<QVariant> DisplayClient::send(const CMPath &path, const QVariant &value)
{
    CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    return reply;
}

CMReply<QVariant> DisplayClient::open(const TavoNotificationDisplayItem &item)
{
    return send(TavoNotificationDisplayOpenPath(),
                TavoValue().setNotificationDisplayItem(item).__variant());
}

CMReply<QVariant> DisplayClient::cancel(const CMPath &path)
{
    return send(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path).__variant());
}

void DisplayClient::close(const CMPath &path)
{
    CMSubscribe::closeNode(path);
}

QVector<CMPath> DisplayClient::rows()
{
    CMError error;
    QVector<CMPath> paths;
    const QVariantList rows = readRows(TavoNotificationDisplayQueuePath(), &error);
    for (const QVariant &row : rows) {
        paths.append(CMPath::fromQVariant(row));
    }
    return paths;
}

bool DisplayClient::exists(const CMPath &path)
{
    CMError error;
    readRows(path, &error);
    return error.name() != CMErrors::noSuchNode();
}

TavoRoles DisplayClient::rowOf(const CMPath &path)
{
    CMError error;
    const QVariantList rows = readRows(path, &error);
    return rows.size() == 1 ? TavoRoles(rows.first().toHash()) : TavoRoles();
}

TavoNotificationDisplayCurrent DisplayClient::current()
{
    return TavoValue(CMRoot()->getValue(TavoNotificationDisplayCurrentPath()).toHash())
        .displayCurrent();
}

TavoNotificationDisplayEnded DisplayClient::ended()
{
    return TavoValue(CMRoot()->getValue(TavoNotificationDisplayEndedPath()).toHash())
        .displayEnded();
}

int DisplayClient::subscriptions(const CMPath &path)
{
    return CMSubscribe::raiseRowsChange(path, {CMSubscribe::RowsChangeReset()});
}

QStringList DisplayClient::takeLog()
{
    QStringList lines;
    for (const LogCapture::Record &record : m_log.records()) {
        const std::string level = log4cplus::getLogLevelManager().toString(record.level);
        lines.append(QString::fromStdString(level + ' ' + record.message));
    }
    m_log.clear();
    return lines;
}
