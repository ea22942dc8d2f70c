// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/model/cmreply.h"
#include "core/records/cmpath.h"

/// The data that all copies of a request share. Destroyed with the last copy of the request and of
/// the replies that reply() has returned. If nobody has answered by then, the reply gets the error
/// CMErrors::noAnswer().
class TAVO_API_EXPORT CMRequestData : public CMAnswering
{
public:
    /// The data of a request with a value.
    CMRequestData(CMPath requestPath, QVariant requestValue, CMReply<QVariant> requestReply)
        : path(std::move(requestPath))
        , value(std::move(requestValue))
        , reply(std::move(requestReply))
    {
    }
    /// The data of a request for rows.
    CMRequestData(CMPath requestPath, int firstRow, int rowCount, CMReply<QVariant> requestReply)
        : path(std::move(requestPath))
        , first(firstRow)
        , count(rowCount)
        , reply(std::move(requestReply))
    {
    }
    ~CMRequestData() override;

    const CMPath path;             ///< the node's path
    const QVariant value;          ///< what was sent; invalid for requests that only read
    const int first = 0;           ///< the first row
    const int count = -1;          ///< the number of rows; -1: all
    const CMReply<QVariant> reply; ///< the requester's reply
};

/// A request to a node. Copies share their data. Used from any thread.
class TAVO_API_EXPORT CMRequest
{
public:
    /// The kinds of requests.
    enum class Type { None, SetData, GetData, GetRows, MatchRow };

    CMRequest() = default;

    /// The kind; None for an empty request.
    Type type() const { return m_type; }
    /// The path of the node. Asserts that the request is not empty.
    CMPath path() const { return checked()->path; }

    /// The reply to finish. A copy may be kept, and finished later: the request can be answered as
    /// long as a copy exists.
    CMReply<QVariant> reply() const;

protected:
    /// Shares the data.
    CMRequest(Type type, CMRequestData *data)
        : m_type(type)
        , m_data(data)
    {
    }

    /// The data; null for an empty request.
    const CMRequestData *d() const { return m_data.data(); }

    /// The data. Asserts that there is some.
    const CMRequestData *checked() const;

private:
    Type m_type = Type::None;
    QExplicitlySharedDataPointer<CMRequestData> m_data;
};

/// Sets a node's value, or activates it with one.
class TAVO_API_EXPORT CMSetDataRequest : public CMRequest
{
public:
    CMSetDataRequest() = default;
    /// A request that finishes the reply.
    CMSetDataRequest(const CMPath &path, const QVariant &value, const CMReply<QVariant> &reply)
        : CMRequest(Type::SetData, new CMRequestData(path, value, reply))
    {
    }
    /// Views a request of this type, such as one that CMWorker::request() got.
    explicit CMSetDataRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }

    /// What was sent. TavoValue(value().toHash()) reads a record.
    QVariant value() const { return checked()->value; }
};

/// Reads a node's value.
class TAVO_API_EXPORT CMGetDataRequest : public CMRequest
{
public:
    CMGetDataRequest() = default;
    /// A request that finishes the reply.
    CMGetDataRequest(const CMPath &path, const CMReply<QVariant> &reply)
        : CMRequest(Type::GetData, new CMRequestData(path, QVariant(), reply))
    {
    }
    /// Views a request of this type, such as one that CMWorker::request() got.
    explicit CMGetDataRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }
};

/// Reads count rows of a node from first on; all if count is -1. The reply is a list.
class TAVO_API_EXPORT CMGetRowsRequest : public CMRequest
{
public:
    CMGetRowsRequest() = default;
    /// A request that finishes the reply.
    CMGetRowsRequest(const CMPath &path, int first, int count, const CMReply<QVariant> &reply)
        : CMRequest(Type::GetRows, new CMRequestData(path, first, count, reply))
    {
    }
    /// Views a request of this type, such as one that CMWorker::request() got.
    explicit CMGetRowsRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }

    /// The index of the first row to read.
    int first() const { return checked()->first; }
    /// How many rows to read; -1: all from first() on.
    int count() const { return checked()->count; }
};

/// Asks for the index of the first row that equals the value. The reply is -1 if there is none.
class TAVO_API_EXPORT CMMatchRowRequest : public CMRequest
{
public:
    CMMatchRowRequest() = default;
    /// A request that finishes the reply.
    CMMatchRowRequest(const CMPath &path, const QVariant &value, const CMReply<QVariant> &reply)
        : CMRequest(Type::MatchRow, new CMRequestData(path, value, reply))
    {
    }
    /// Views a request of this type, such as one that CMWorker::request() got.
    explicit CMMatchRowRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }

    /// The row to find.
    QVariant value() const { return checked()->value; }
};

Q_DECLARE_METATYPE(CMSetDataRequest)
