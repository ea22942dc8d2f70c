// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmabstractworker.h"

#include "core/registry/cmsubscriptions.h"

namespace {
std::unique_ptr<ChangeNotifier> makeNotifier(CMAbstractWorker::ChangeType type, const CMPath &path,
                                             const QObject *receiver)
{
    switch (type) {
    case CMAbstractWorker::ValueChange:
        return std::make_unique<ValueChangeNotifier>(path, receiver);
    case CMAbstractWorker::NodeChange:
        return std::make_unique<NodeChangeNotifier>(path, receiver);
    case CMAbstractWorker::RowsChange:
        break;
    }
    return std::make_unique<RowsChangeNotifier>(path, receiver);
}

CMSubscriptions &subscriptionsTo(CMAbstractWorker::ChangeType type)
{
    switch (type) {
    case CMAbstractWorker::ValueChange:
        return CMSubscriptions::toValues();
    case CMAbstractWorker::NodeChange:
        return CMSubscriptions::toNodes();
    case CMAbstractWorker::RowsChange:
        break;
    }
    return CMSubscriptions::toRows();
}
} // namespace

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
    std::unique_ptr<ChangeNotifier> notifier = makeNotifier(type, path, receiver);
    if (notifier->thread() != receiver->thread()) {
        notifier->moveToThread(receiver->thread());
    }
    if (connectTo(notifier.get())) {
        subscriptionsTo(type).add(std::move(notifier));
    }
}

void CMAbstractWorker::disconnectChange(ChangeType type, const CMPath &path, QObject *receiver,
                                        std::function<void(ChangeNotifier *)> disconnectFrom)
{
    subscriptionsTo(type).end(path, receiver, disconnectFrom);
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
