// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ResourceGrants.h"
#include <core/tavo.h>

#include <QList>
#include <QMap>

#include <optional>

class Revocation;

/// Registers modules, grants them resources, and revokes all resources for standby. Every request
/// gets a reply, after the state node has been updated.
///
/// Lives in the thread that made it. Owned by the host.
class PowerManagerWorker : public CMNodesWorker, public CMReconfigurable
{
    Q_OBJECT

public:
    /// Throws the errors of TavoConfiguration.
    explicit PowerManagerWorker(const QVariantHash &config);

    /// A standby that is under way keeps its timeout.
    QStringList reconfigure(const QVariantHash &config) override;

private Q_SLOTS:
    void on_moduleRegister_activated(const CMSetDataRequest &request);
    void on_resourceRequest_activated(const CMSetDataRequest &request);
    void on_standby_activated(const CMSetDataRequest &request);
    void on_resume_activated(const CMSetDataRequest &request);
    void on_moduleNode_changed(const CMPath &path, bool published);
    void on_revocation_finished();

private:
    void acquire(const TavoPowerManagerResourceRequest &request, const CMReply<QVariant> &reply);
    void release(const TavoPowerManagerResourceRequest &request, const CMReply<QVariant> &reply);

    /// Return why a request is refused; empty if it is granted.
    std::optional<CMError> refusal(const TavoPowerManagerResourceRequest &request) const;
    std::optional<CMError> refusal(const TavoPowerManagerModuleRegister &module) const;

    /// Whether a module has registered with this record and has not gone.
    bool isRegistered(const TavoPowerManagerModuleRegister &module) const;

    void registerModule(const TavoPowerManagerModuleRegister &module);
    void forgetModule(const QString &name);

    void startStandby();
    void publishState();

    int m_revokeTimeoutMs = 0;
    CMValueNode *m_stateNode = nullptr; ///< owned by nodes()
    bool m_standby = false;
    QMap<QString, TavoPowerManagerModuleRegister> m_modules; ///< by name
    ResourceGrants m_grants;

    /// Null unless the device is on its way to standby. A child.
    Revocation *m_revocation = nullptr;

    /// The replies to finish at the end of the revocation. If the worker is deleted earlier, they
    /// get an error.
    QList<CMReply<QVariant>> m_standbyReplies;
};
