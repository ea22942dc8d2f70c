// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/model/cmabstractworker.h"
#include "core/model/nodes/cmnodes.h"

#include <QVariantHash>

/// The base of a module's worker: a name, a configuration and a set of nodes.
///
/// Lives in the thread that made it. Owned by the host. Its nodes are disposed of before its
/// QObject children are deleted, so no request reaches a child that is being deleted.
class TAVO_API_EXPORT CMNodesWorker : public CMAbstractWorker
{
    Q_OBJECT

public:
    /// The name is used in messages, and is the reply to ping(). Called in the worker's thread.
    CMNodesWorker(const QVariantHash &config, const QString &name);
    ~CMNodesWorker() override;

    /// Where the worker makes its nodes.
    CMNodes *nodes() { return &m_nodes; }
    /// The configuration that was given. It does not change.
    const QVariantHash &config() const { return m_config; }
    /// The name that was given.
    const QString &name() const { return m_name; }

    void ping(const CMSetDataRequest &request) override;
    void trace() override;
    void getDataRequest(const CMGetDataRequest &request) override;
    void getRowsRequest(const CMGetRowsRequest &request) override;
    void matchRowRequest(const CMMatchRowRequest &request) override;
    void setDataRequest(const CMSetDataRequest &request) override;

private:
    const QVariantHash m_config;
    const QString m_name;
    CMNodes m_nodes;
};
