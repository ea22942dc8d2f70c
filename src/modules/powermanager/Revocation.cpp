// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Revocation.h"

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("PowerManager");

TavoPowerManagerRevokeMessage messageFor(const RevokedModule &module,
                                         TavoPowerManagerRevokeMessageType::Enum type)
{
    return TavoPowerManagerRevokeMessage().setMessageType(type).setRevokeResources(
        module.resources);
}

QString namesOf(const TavoList<TavoPowerManagerResources::Enum> &resources)
{
    QStringList names;
    for (int i = 0; i < resources.size(); ++i) {
        names.append(TavoPowerManagerResources::toString(resources.at(i)));
    }
    return names.join(QStringLiteral(", "));
}
} // namespace

Revocation::Revocation(const QList<RevokedModule> &modules, int timeoutMs, QObject *parent)
    : QObject(parent)
    , m_modules(modules)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeoutMs);
    tavoConnect(&m_timer, &QTimer::timeout, this, &Revocation::on_timer_timeout);
}

void Revocation::start()
{
    for (const RevokedModule &module : m_modules) {
        m_unanswered.append(module.name);
    }
    for (const RevokedModule &module : m_modules) {
        revoke(module);
    }
    if (m_unanswered.isEmpty()) {
        finish();
        return;
    }
    m_timer.start();
}

void Revocation::revoke(const RevokedModule &module)
{
    LOG4CPLUS_INFO(logger, "Revoking " << namesOf(module.resources) << " from " << module.name);
    const auto message = messageFor(module, TavoPowerManagerRevokeMessageType::Revoked);
    // Queued, so that an immediate reply doesn't finish the revocation while it starts.
    CMRoot()
        ->invoke(module.revokePath, message, CMReply<QVariant>())
        .addWatcher(
            this, [this, name = module.name](const CMVoidReply &reply) { takeReply(name, reply); },
            Qt::QueuedConnection);
}

void Revocation::takeReply(const QString &module, const CMVoidReply &reply)
{
    if (reply.error().isError()) {
        // The module is probably gone, so it counts as stopped.
        LOG4CPLUS_WARN(logger, "Failed to revoke resources from "
                                   << module << ": " << reply.error().message().toString());
    }
    const bool isAwaited = m_unanswered.removeOne(module);
    if (isAwaited && m_unanswered.isEmpty()) {
        finish();
    }
}

void Revocation::on_timer_timeout()
{
    LOG4CPLUS_WARN(logger, "No answer to revoke within "
                               << m_timer.interval()
                               << " ms from: " << m_unanswered.join(QStringLiteral(", ")));
    m_unanswered.clear();
    finish();
}

void Revocation::finish()
{
    m_timer.stop();
    for (const RevokedModule &module : m_modules) {
        if (!module.postRevokePath.isEmpty()) {
            CMRoot()->invoke(module.postRevokePath,
                             messageFor(module, TavoPowerManagerRevokeMessageType::PostRevoked),
                             CMReply<QVariant>());
        }
    }
    Q_EMIT finished();
}
