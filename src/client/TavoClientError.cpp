// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/TavoClientError.h"

QString TavoClientError::noBus()
{
    return QStringLiteral("NoBus");
}

QString TavoClientError::noHost()
{
    return QStringLiteral("NoHost");
}

QString TavoClientError::timedOut()
{
    return QStringLiteral("TimedOut");
}

QString TavoClientError::busTimedOut()
{
    return QStringLiteral("BusTimedOut");
}

QString TavoClientError::notPermitted()
{
    return QStringLiteral("NotPermitted");
}

QString TavoClientError::limitExceeded()
{
    return QStringLiteral("LimitExceeded");
}

bool TavoClientError::isTooLarge(const CMError &error)
{
    return error.name() == limitExceeded() || error.name() == QLatin1String("UnsupportedValue");
}
