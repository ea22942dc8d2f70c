// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/Location.h"

namespace {

// A path may have colons too, so only what can be nothing else is read as a URI.
QString schemeOf(const QString &text)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    const QString scheme = text.left(qMax(0, colon)).toLower();
    for (const QChar character : scheme) {
        if (!character.isLetterOrNumber() && !QStringLiteral("+-.").contains(character))
            return QString();
    }
    const bool isUri = scheme == QLatin1String("file") || text.midRef(colon + 1).startsWith("//");
    return isUri ? scheme : QString();
}

Location parseFile(const QString &text)
{
    const QUrl url(text);
    const bool isLocal = url.host().isEmpty() || url.host() == QLatin1String("localhost");
    if (!isLocal || url.path().isEmpty())
        return {{}, {}, QStringLiteral("\"%1\" names no file of this device").arg(text)};
    return {url.path(QUrl::FullyDecoded), {}, {}};
}

} // namespace

Location parseLocation(const QString &text)
{
    if (text.isEmpty())
        return {{}, {}, QStringLiteral("No sound is named")};
    const QString scheme = schemeOf(text);
    if (scheme.isEmpty())
        return {text, {}, {}};
    if (scheme == QLatin1String("file"))
        return parseFile(text);
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return {{}, {}, QStringLiteral("\"%1\": %2: is not supported").arg(text, scheme)};
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return {{}, {}, QStringLiteral("\"%1\" is not a valid URI").arg(text)};
    return {{}, url, {}};
}
