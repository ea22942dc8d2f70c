// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ResourceGrants.h"

#include <core/tavo.h>

#include <QList>
#include <QMap>

class Revocation;

/// The power manager: knows the modules, grants them resources, and takes everything back for
/// standby.
///
/// Thread: the one that made it. Owner: the host. Every request is answered, and the state node is
/// up to date before the answer is given.
class PowerManagerWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    /// Throws a std::runtime_error that names the key for a configuration that it can't use.
    explicit PowerManagerWorker(const QVariantHash &config);

private Q_SLOTS:
    void on_moduleRegister_activated(const CMSetDataRequest &request);
    void on_resourceRequest_activated(const CMSetDataRequest &request);
    void on_standby_activated(const CMSetDataRequest &request);
    void on_resume_activated(const CMSetDataRequest &request);
    void on_moduleNode_changed(const CMPath &path, bool published);
    void on_revocation_finished();

private:
    void acquire(const TavoPowerManagerResourceRequest &wish, const CMReply<QVariant> &reply);
    void release(const TavoPowerManagerResourceRequest &wish, const CMReply<QVariant> &reply);
    CMError refusal(const TavoPowerManagerResourceRequest &wish) const;

    void registerModule(const TavoPowerManagerModuleRegister &module);
    void forgetModule(const QString &name);

    void startStandby();
    void publishState();

    int m_revokeTimeoutMs = 0;
    CMValueNode *m_stateNode = nullptr; ///< the node set's
    bool m_standby = false;
    QMap<QString, TavoPowerManagerModuleRegister> m_modules; ///< by name
    ResourceGrants m_grants;

    /// The standby under way; a child. Null when none is.
    Revocation *m_revocation = nullptr;

    /// Where its end is awaited. A reply that is dropped with the worker answers itself.
    QList<CMReply<QVariant>> m_standbyReplies;
};
