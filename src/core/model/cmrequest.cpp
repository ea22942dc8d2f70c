// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmrequest.h"

CMRequestData::~CMRequestData()
{
    if (!reply.isFinished()) {
        reply.setError(CMError(CMErrors::noAnswer(),
                               QStringLiteral("The request to %1 was dropped without an answer")
                                   .arg(path.toString())));
    }
}

CMReply<QVariant> CMRequest::reply() const
{
    return {checked()->reply, m_data.data()};
}

const CMRequestData *CMRequest::checked() const
{
    Q_ASSERT(d());
    return d();
}
