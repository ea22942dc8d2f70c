// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmroot.h"

#include "core/registry/cmregistry.h"
#include "core/registry/cmrouting.h"

namespace {
/// Routes each request to the node at its path, wherever its worker lives.
class RootWorker : public CMAbstractWorker
{
public:
    void ping(const CMSetDataRequest &request) override
    {
        request.reply().setValue(QStringLiteral("Root"));
    }
    void trace() override { CMRegistry::instance().trace(); }
    void getDataRequest(const CMGetDataRequest &request) override
    {
        cmRoute(request, &CMEndpoint::getData);
    }
    void getRowsRequest(const CMGetRowsRequest &request) override
    {
        cmRoute(request, &CMEndpoint::getRows);
    }
    void matchRowRequest(const CMMatchRowRequest &request) override
    {
        cmRoute(request, &CMEndpoint::matchRow);
    }
    void setDataRequest(const CMSetDataRequest &request) override
    {
        cmRoute(request, &CMEndpoint::setData);
    }
};
} // namespace

CMAbstractWorker *CMRoot()
{
    static auto *root = new RootWorker;
    return root;
}
