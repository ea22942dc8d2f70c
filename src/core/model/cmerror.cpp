// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmerror.h"

CMError::CMError(const QString &name, const TrString &message)
{
    insert(Name(), name);
    insert(Message(), message);
    insert(Title(), DefaultTitle());
}

QString CMError::Name()
{
    return QStringLiteral("name");
}

QString CMError::Message()
{
    return QStringLiteral("message");
}

QString CMError::Title()
{
    return QStringLiteral("title");
}

TrString CMError::DefaultTitle()
{
    static const TrString title(TrCharData{"CMError", "Error", nullptr, -1}, {});
    return title;
}

QString CMErrors::noSuchNode()
{
    return QStringLiteral("NoSuchNode");
}

QString CMErrors::notSupported()
{
    return QStringLiteral("NotSupported");
}

QString CMErrors::noAnswer()
{
    return QStringLiteral("NoAnswer");
}
