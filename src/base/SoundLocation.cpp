// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/SoundLocation.h"

#include <algorithm>

namespace {

bool isAsciiLetter(QChar character)
{
    const ushort lower = character.toLower().unicode();
    return lower >= 'a' && lower <= 'z';
}

bool isSchemeCharacter(QChar character)
{
    return isAsciiLetter(character) || (character >= '0' && character <= '9') ||
           QLatin1String("+-.").contains(character);
}

bool isHttp(const QString &scheme)
{
    return scheme == QLatin1String("http") || scheme == QLatin1String("https");
}

/// In lower case; empty for a path.
QString schemeOf(const QString &name)
{
    const int colon = name.indexOf(QLatin1Char(':'));
    const QString scheme = name.left(std::max(0, colon)).toLower();
    if (scheme.isEmpty() || !isAsciiLetter(scheme[0]) ||
        !std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter)) {
        return QString();
    }
    const bool isUri = scheme == QLatin1String("file") || isHttp(scheme) ||
                       name.midRef(colon + 1).startsWith(QLatin1String("//"));
    return isUri ? scheme : QString();
}

Result<SoundLocation> fileAt(const QString &path)
{
    // The system would read the path only up to the first null character.
    if (path.isEmpty() || path.contains(QChar::Null)) {
        return Failure{QStringLiteral("does not name a file on this device")};
    }
    return SoundLocation{path, {}};
}

Result<SoundLocation> parseFileUri(const QUrl &url)
{
    const bool isLocal = url.host().isEmpty() || url.host() == QLatin1String("localhost");
    const QString path = url.path(QUrl::FullyDecoded);
    return fileAt(isLocal && path.startsWith(QLatin1Char('/')) ? path : QString());
}

/// Takes the part of a URL between the scheme and the path. Returns false if it has no host because
/// it ends within a password.
bool hasHost(const QStringRef &text)
{
    if (text.startsWith('[') || text.contains('@')) {
        return true;
    }
    const int colon = text.indexOf(':');
    const QStringRef port = colon < 0 ? QStringRef() : text.mid(colon + 1);
    return std::all_of(port.begin(), port.end(), [](QChar c) { return c >= '0' && c <= '9'; });
}

} // namespace

Result<SoundLocation> parseSoundLocation(const QString &name)
{
    if (name.isEmpty()) {
        return Failure{QStringLiteral("names no sound")};
    }
    const QString scheme = schemeOf(name);
    if (scheme.isEmpty()) {
        return fileAt(name);
    }
    const QUrl url(name, QUrl::StrictMode);
    const bool isFile = scheme == QLatin1String("file");
    if (!isFile && !isHttp(scheme)) {
        return Failure{QStringLiteral("has a scheme that is not supported")};
    }
    if (!url.isValid() || (isHttp(scheme) && url.host().isEmpty())) {
        return Failure{QStringLiteral("is not a valid URI")};
    }
    if (isFile) {
        return parseFileUri(url);
    }
    return SoundLocation{{}, url};
}

bool isSoundUri(const QString &name)
{
    return !schemeOf(name).isEmpty();
}

QString withoutUserInfo(const QString &text)
{
    const QLatin1String behindScheme("://");
    QString result;
    int copied = 0;
    int at = 0;
    while ((at = text.indexOf(behindScheme, at)) >= 0) {
        at += behindScheme.size();
        const auto begin = text.begin() + at;
        const auto urlEnd = std::find_if(begin, text.end(), [](QChar c) { return c.isSpace(); });
        auto end =
            std::find_if(begin, urlEnd, [](QChar c) { return c == '/' || c == '?' || c == '#'; });
        if (!hasHost(text.midRef(at, int(end - begin)))) {
            end = urlEnd; // a password with a character that should have been encoded
        }
        const int sign = text.midRef(at, int(end - begin)).lastIndexOf('@');
        if (sign >= 0) {
            result += text.midRef(copied, at - copied);
            at += sign + 1;
            copied = at;
        }
    }
    return copied == 0 ? text : result + text.midRef(copied);
}
