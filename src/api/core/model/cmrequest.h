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
    CMRequestData(CMPath requestPath, QVariant requestValue, CMReply<QVariant> requestReply)
        : path(std::move(requestPath))
        , value(std::move(requestValue))
        , reply(std::move(requestReply))
    {
    }
    CMRequestData(CMPath requestPath, int firstRow, int rowCount, CMReply<QVariant> requestReply)
        : path(std::move(requestPath))
        , first(firstRow)
        , count(rowCount)
        , reply(std::move(requestReply))
    {
    }
    ~CMRequestData() override;

    const CMPath path;
    const QVariant value;
    const int first = 0;
    const int count = -1;
    const CMReply<QVariant> reply;
};

/// A request to a node. Copies share their data. Used from any thread.
class TAVO_API_EXPORT CMRequest
{
public:
    enum class Type { None, SetData, GetData, GetRows, MatchRow };

    CMRequest() = default;

    Type type() const { return m_type; }
    CMPath path() const { return checked()->path; }

    /// The reply to finish. A copy may be kept, and finished later: the request can be answered as
    /// long as a copy exists.
    CMReply<QVariant> reply() const;

protected:
    CMRequest(Type type, CMRequestData *data)
        : m_type(type)
        , m_data(data)
    {
    }

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
    CMSetDataRequest(const CMPath &path, const QVariant &value, const CMReply<QVariant> &reply)
        : CMRequest(Type::SetData, new CMRequestData(path, value, reply))
    {
    }
    explicit CMSetDataRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }

    QVariant value() const { return checked()->value; }
};

/// Reads a node's value.
class TAVO_API_EXPORT CMGetDataRequest : public CMRequest
{
public:
    CMGetDataRequest() = default;
    CMGetDataRequest(const CMPath &path, const CMReply<QVariant> &reply)
        : CMRequest(Type::GetData, new CMRequestData(path, QVariant(), reply))
    {
    }
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
    CMGetRowsRequest(const CMPath &path, int first, int count, const CMReply<QVariant> &reply)
        : CMRequest(Type::GetRows, new CMRequestData(path, first, count, reply))
    {
    }
    explicit CMGetRowsRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }

    int first() const { return checked()->first; }
    int count() const { return checked()->count; }
};

/// Asks for the index of the first row that equals the value. The reply is -1 if there is none.
class TAVO_API_EXPORT CMMatchRowRequest : public CMRequest
{
public:
    CMMatchRowRequest() = default;
    CMMatchRowRequest(const CMPath &path, const QVariant &value, const CMReply<QVariant> &reply)
        : CMRequest(Type::MatchRow, new CMRequestData(path, value, reply))
    {
    }
    explicit CMMatchRowRequest(const CMRequest &request)
        : CMRequest(request)
    {
    }

    QVariant value() const { return checked()->value; }
};

Q_DECLARE_METATYPE(CMSetDataRequest)
