// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PowerManagerWorker.h"

#include "Revocation.h"

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("PowerManager");

constexpr int defaultRevokeTimeoutMs = 2000;
constexpr int longestRevokeTimeoutMs = 60000;

CMError error(const TrString &message)
{
    return {QStringLiteral("PowerManager"), message};
}

int readRevokeTimeout(const QVariantHash &config)
{
    TavoConfiguration configuration(config);
    const int timeout = configuration.integer(QStringLiteral("revokeTimeout"),
                                              defaultRevokeTimeoutMs, 1, longestRevokeTimeoutMs);
    configuration.finish();
    return timeout;
}

/// What reads as the first resource because it is missing, or no whole number, names none.
bool namesResource(const TavoPowerManagerResourceRequest &wish)
{
    const QVariant field = wish.fields().value(QStringLiteral("resource"));
    return tavoIsNumber(field) && field.toDouble() == wish.resource() &&
           ResourceGrants::isKnown(wish.resource());
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    LOG4CPLUS_DEBUG(logger, "Creating worker " << (name != nullptr ? name : ""));
    CMWorker *worker = new PowerManagerWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}

PowerManagerWorker::PowerManagerWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("PowerManager"))
    , m_revokeTimeoutMs(readRevokeTimeout(config))
{
    m_stateNode = CMValueNode::create(nodes(), TavoPowerManagerStatePath());
    publishState();
    CMActivateNode::create(nodes(), TavoPowerManagerModuleRegisterPath())
        ->setInvoke(this, &PowerManagerWorker::on_moduleRegister_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavoPowerManagerResourceRequestPath())
        ->setInvoke(this, &PowerManagerWorker::on_resourceRequest_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavoPowerManagerStandbyPath())
        ->setInvoke(this, &PowerManagerWorker::on_standby_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), TavoPowerManagerResumePath())
        ->setInvoke(this, &PowerManagerWorker::on_resume_activated, Qt::QueuedConnection);
}

void PowerManagerWorker::on_moduleRegister_activated(const CMSetDataRequest &request)
{
    const TavoPowerManagerModuleRegister module(request.value().toHash());
    if (module.moduleName().isEmpty() || module.revokeResourcesPath().isEmpty()) {
        LOG4CPLUS_WARN(logger, "Refused a registration: " << request.value());
        request.reply().setError(
            error(TAVO_TR("A registration needs a moduleName and a revokeResourcesPath")));
        return;
    }
    registerModule(module);
    publishState();
    request.reply().setValue(QVariant());
}

void PowerManagerWorker::on_resourceRequest_activated(const CMSetDataRequest &request)
{
    const TavoPowerManagerResourceRequest wish(request.value().toHash());
    switch (wish.action()) {
    case TavoPowerModuleActions::Acquire:
        acquire(wish, request.reply());
        return;
    case TavoPowerModuleActions::Release:
        release(wish, request.reply());
        return;
    case TavoPowerModuleActions::None:
        break;
    }
    LOG4CPLUS_WARN(logger, "Refused a request without an action: " << request.value());
    request.reply().setError(error(TAVO_TR("The action must be to acquire (1) or release (2)")));
}

void PowerManagerWorker::acquire(const TavoPowerManagerResourceRequest &wish,
                                 const CMReply<QVariant> &reply)
{
    const QString resource = TavoPowerManagerResources::toString(wish.resource());
    const CMError refused = refusal(wish);
    if (refused.isError()) {
        LOG4CPLUS_WARN(logger, "Refused " << resource << " to " << wish.moduleName() << ": "
                                          << refused.message().toString());
        reply.setError(refused);
        return;
    }
    m_grants.grant(wish.resource(), wish.moduleName());
    LOG4CPLUS_INFO(logger, "Granted " << resource << " to " << wish.moduleName());
    publishState();
    reply.setValue(QVariant());
}

void PowerManagerWorker::release(const TavoPowerManagerResourceRequest &wish,
                                 const CMReply<QVariant> &reply)
{
    // A release that finds nothing is no mistake: the resource may have been revoked meanwhile.
    const bool held = namesResource(wish) && m_grants.release(wish.resource(), wish.moduleName());
    if (held) {
        LOG4CPLUS_INFO(logger, "Released " << TavoPowerManagerResources::toString(wish.resource())
                                           << " of " << wish.moduleName());
        publishState();
    }
    reply.setValue(QVariant());
}

CMError PowerManagerWorker::refusal(const TavoPowerManagerResourceRequest &wish) const
{
    if (wish.moduleName().isEmpty()) {
        return error(TAVO_TR("The request names no module"));
    }
    if (!m_modules.contains(wish.moduleName())) {
        return error(TAVO_TR("The module is not registered"));
    }
    if (!namesResource(wish)) {
        return error(TAVO_TR("There is no such resource"));
    }
    if (m_standby) {
        return error(TAVO_TR("The device is in standby"));
    }
    return {};
}

void PowerManagerWorker::registerModule(const TavoPowerManagerModuleRegister &module)
{
    // Who registers again has started again, and holds nothing any more.
    forgetModule(module.moduleName());
    m_modules.insert(module.moduleName(), module);
    CMRoot()->connectNodeChange(module.revokeResourcesPath(), this,
                                &PowerManagerWorker::on_moduleNode_changed);
    LOG4CPLUS_INFO(logger, "Registered " << module.moduleName() << ", revoke path "
                                         << module.revokeResourcesPath());
}

void PowerManagerWorker::forgetModule(const QString &name)
{
    const auto module = m_modules.find(name);
    if (module == m_modules.end()) {
        return;
    }
    CMRoot()->disconnectNodeChange(module->revokeResourcesPath(), this,
                                   &PowerManagerWorker::on_moduleNode_changed);
    m_modules.erase(module);
    m_grants.releaseAll(name);
    LOG4CPLUS_INFO(logger, "Forgot the registration of " << name << " and what it held");
}

void PowerManagerWorker::on_moduleNode_changed(const CMPath &path, bool published)
{
    if (published) {
        return;
    }
    // A module that has gone can't release what it held.
    const QStringList names = m_modules.keys();
    for (const QString &name : names) {
        if (m_modules.value(name).revokeResourcesPath() == path) {
            forgetModule(name);
        }
    }
    publishState();
}

void PowerManagerWorker::on_standby_activated(const CMSetDataRequest &request)
{
    const bool isInStandby = m_standby && m_revocation == nullptr;
    if (isInStandby) {
        request.reply().setValue(QVariant());
        return;
    }
    m_standbyReplies.append(request.reply());
    if (m_revocation == nullptr) {
        startStandby();
    }
}

void PowerManagerWorker::startStandby()
{
    QList<RevokedModule> holders;
    for (const TavoPowerManagerModuleRegister &module : std::as_const(m_modules)) {
        const auto held = m_grants.heldBy(module.moduleName());
        if (!held.isEmpty()) {
            holders.append({module.moduleName(), module.revokeResourcesPath(),
                            module.postRevokeResourcesPath(), held});
        }
    }
    LOG4CPLUS_INFO(logger, "Entering standby, holders: " << holders.size());
    m_standby = true;
    m_grants.clear();
    publishState();
    m_revocation = new Revocation(holders, m_revokeTimeoutMs, this);
    tavoConnect(m_revocation, &Revocation::finished, this,
                &PowerManagerWorker::on_revocation_finished);
    m_revocation->start();
}

void PowerManagerWorker::on_revocation_finished()
{
    LOG4CPLUS_INFO(logger, "In standby");
    std::exchange(m_revocation, nullptr)->deleteLater();
    for (const CMReply<QVariant> &reply : std::exchange(m_standbyReplies, {})) {
        reply.setValue(QVariant());
    }
}

void PowerManagerWorker::on_resume_activated(const CMSetDataRequest &request)
{
    // The notice that everybody has stopped is for a standby that came about.
    delete std::exchange(m_revocation, nullptr);
    for (const CMReply<QVariant> &reply : std::exchange(m_standbyReplies, {})) {
        reply.setError(error(TAVO_TR("Standby was ended by a resume before it was complete")));
    }
    if (m_standby) {
        LOG4CPLUS_INFO(logger, "Resumed");
        m_standby = false;
        publishState();
    }
    request.reply().setValue(QVariant());
}

void PowerManagerWorker::publishState()
{
    TavoList<QString> names;
    for (auto it = m_modules.keyBegin(); it != m_modules.keyEnd(); ++it) {
        names.append(*it);
    }
    m_stateNode->setValue(TavoValue().setPowerManagerState(
        TavoPowerManagerState().setStandby(m_standby).setModules(names).setResources(
            m_grants.holders())));
}
