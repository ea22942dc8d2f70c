// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PowerManagerWorker.h"

#include "Revocation.h"

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("PowerManager");

constexpr int defaultRevokeTimeoutMs = 2000;
constexpr int maxRevokeTimeoutMs = 60000;

// Clients on a bus may register too. The limits keep the state, which lists all names, small enough to be
// published at each change.
constexpr int maxModules = 256;
constexpr int maxLength = 256; ///< of a name or path, in characters

CMError error(const TrString &message)
{
    return {QStringLiteral("PowerManager"), message};
}

int readRevokeTimeout(const QVariantHash &config)
{
    TavoConfiguration configuration(config);
    const int timeout = configuration.integer(QStringLiteral("revokeTimeout"),
                                              defaultRevokeTimeoutMs, 1, maxRevokeTimeoutMs);
    configuration.finish();
    return timeout;
}

/// A field that is missing, or not an integer, would be read as the first resource.
bool namesResource(const TavoPowerManagerResourceRequest &request)
{
    const QVariant field = request.fields().value(QStringLiteral("resource"));
    return tavoIsNumber(field) && field.toDouble() == request.resource() &&
           ResourceGrants::isKnown(request.resource());
}

/// The record without fields that a registration does not have, which would be stored with it.
TavoPowerManagerModuleRegister registrationOf(const QVariant &value)
{
    const TavoPowerManagerModuleRegister sent(value.toHash());
    return TavoPowerManagerModuleRegister()
        .setModuleName(sent.moduleName())
        .setRevokeResourcesPath(sent.revokeResourcesPath())
        .setPostRevokeResourcesPath(sent.postRevokeResourcesPath());
}

bool isTooLong(const TavoPowerManagerModuleRegister &module)
{
    return module.moduleName().size() > maxLength ||
           module.revokeResourcesPath().toString().size() > maxLength ||
           module.postRevokeResourcesPath().toString().size() > maxLength;
}

/// Whether the module can get messages: the node at its revoke path exists.
bool isPresent(const TavoPowerManagerModuleRegister &module)
{
    return CMCatalog::entry(module.revokeResourcesPath()).has_value();
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

QStringList PowerManagerWorker::reconfigure(const QVariantHash &config)
{
    m_revokeTimeoutMs = readRevokeTimeout(config);
    return {};
}

void PowerManagerWorker::on_moduleRegister_activated(const CMSetDataRequest &request)
{
    const TavoPowerManagerModuleRegister module = registrationOf(request.value());
    if (const auto error = refusal(module)) {
        LOG4CPLUS_WARN(logger, "Refused a registration: " << request.value());
        request.reply().setError(*error);
        return;
    }
    if (!isRegistered(module)) {
        registerModule(module);
        publishState();
    }
    request.reply().setValue(QVariant());
}

void PowerManagerWorker::on_resourceRequest_activated(const CMSetDataRequest &request)
{
    const TavoPowerManagerResourceRequest resourceRequest(request.value().toHash());
    switch (resourceRequest.action()) {
    case TavoPowerModuleActions::Acquire:
        acquire(resourceRequest, request.reply());
        return;
    case TavoPowerModuleActions::Release:
        release(resourceRequest, request.reply());
        return;
    case TavoPowerModuleActions::None:
        break;
    }
    LOG4CPLUS_WARN(logger, "Refused a request without an action: " << request.value());
    request.reply().setError(error(TAVO_TR("The action must be to acquire (1) or release (2)")));
}

void PowerManagerWorker::acquire(const TavoPowerManagerResourceRequest &request,
                                 const CMReply<QVariant> &reply)
{
    const QString resource = TavoPowerManagerResources::toString(request.resource());
    if (const auto error = refusal(request)) {
        LOG4CPLUS_WARN(logger, "Refused " << resource << " to " << request.moduleName() << ": "
                                          << error->message().toString());
        reply.setError(*error);
        return;
    }
    m_grants.grant(request.resource(), request.moduleName());
    LOG4CPLUS_INFO(logger, "Granted " << resource << " to " << request.moduleName());
    publishState();
    reply.setValue(QVariant());
}

void PowerManagerWorker::release(const TavoPowerManagerResourceRequest &request,
                                 const CMReply<QVariant> &reply)
{
    // Releasing a resource that the module doesn't hold is not an error: it may have been revoked
    // in the meantime.
    const bool held =
        namesResource(request) && m_grants.release(request.resource(), request.moduleName());
    if (held) {
        LOG4CPLUS_INFO(logger, "Released "
                                   << TavoPowerManagerResources::toString(request.resource())
                                   << " of " << request.moduleName());
        publishState();
    }
    reply.setValue(QVariant());
}

std::optional<CMError>
PowerManagerWorker::refusal(const TavoPowerManagerResourceRequest &request) const
{
    if (request.moduleName().isEmpty()) {
        return error(TAVO_TR("The request names no module"));
    }
    if (!m_modules.contains(request.moduleName())) {
        return error(TAVO_TR("The module is not registered"));
    }
    if (!namesResource(request)) {
        return error(TAVO_TR("There is no such resource"));
    }
    if (m_standby) {
        return error(TAVO_TR("The device is in standby"));
    }
    return std::nullopt;
}

std::optional<CMError>
PowerManagerWorker::refusal(const TavoPowerManagerModuleRegister &module) const
{
    if (module.moduleName().isEmpty() || module.revokeResourcesPath().isEmpty()) {
        return error(TAVO_TR("A registration needs a moduleName and a revokeResourcesPath"));
    }
    if (isTooLong(module)) {
        return error(TAVO_TR("The name or a path of the module is too long"));
    }
    if (isRegistered(module)) {
        return std::nullopt;
    }
    for (const TavoPowerManagerModuleRegister &other : m_modules) {
        const bool isSameName = other.moduleName() == module.moduleName();
        const bool isSamePath = other.revokeResourcesPath() == module.revokeResourcesPath();
        if ((isSameName || isSamePath) && isPresent(other)) {
            return error(TAVO_TR("The name or the revoke path belongs to another module"));
        }
    }
    if (m_modules.size() >= maxModules && !m_modules.contains(module.moduleName())) {
        return error(TAVO_TR("There are too many modules"));
    }
    return std::nullopt;
}

bool PowerManagerWorker::isRegistered(const TavoPowerManagerModuleRegister &module) const
{
    const auto known = m_modules.find(module.moduleName());
    return known != m_modules.end() && *known == module && isPresent(module);
}

void PowerManagerWorker::registerModule(const TavoPowerManagerModuleRegister &module)
{
    // A known name can be registered again only if its revoke path has no node; that record is
    // replaced.
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
    // A module that is gone can't release its resources.
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
    // Without a post-revoke message, because some holders may still be running.
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
