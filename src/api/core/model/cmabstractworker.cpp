// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmabstractworker.h"

#include "core/cmregistry.h"

CMAbstractWorker::CMAbstractWorker(QObject *parent)
    : CMWorker(parent)
{
}

CMAbstractWorker::~CMAbstractWorker() = default;

void CMAbstractWorker::request(CMRequest request)
{
    switch (request.type()) {
    case CMRequest::Type::None:
        break;
    case CMRequest::Type::SetData:
        setDataRequest(CMSetDataRequest(request));
        break;
    case CMRequest::Type::GetData:
        getDataRequest(CMGetDataRequest(request));
        break;
    case CMRequest::Type::GetRows:
        getRowsRequest(CMGetRowsRequest(request));
        break;
    case CMRequest::Type::MatchRow:
        matchRowRequest(CMMatchRowRequest(request));
        break;
    }
}

void CMAbstractWorker::connectChange(ChangeType type, const CMPath &path, QObject *receiver,
                                     std::function<bool(ChangeNotifier *)> connectTo)
{
    CMRegistry::instance().subscribe(type, path, receiver, connectTo);
}

void CMAbstractWorker::disconnectChange(ChangeType type, const CMPath &path, QObject *receiver,
                                        std::function<void(ChangeNotifier *)> disconnectFrom)
{
    CMRegistry::instance().unsubscribe(type, path, receiver, disconnectFrom);
}

CMReply<QVariant> CMAbstractWorker::invoke(const CMPath &path, const TavoHash &value,
                                           const CMReply<QVariant> &reply)
{
    return invoke(path, value.__variant(), reply);
}

CMReply<QVariant> CMAbstractWorker::invoke(const CMPath &path, const QVariant &value,
                                           const CMReply<QVariant> &reply)
{
    setDataRequest(CMSetDataRequest(path, value, reply));
    return reply;
}

QVariant CMAbstractWorker::getValue(const CMPath &path)
{
    const CMReply<QVariant> reply;
    getDataRequest(CMGetDataRequest(path, reply));
    return reply.value();
}
