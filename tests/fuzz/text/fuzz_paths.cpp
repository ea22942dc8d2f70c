// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Paths from any text and any value: parsing, splitting, joining, and the round trip.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"
#include <core/tavo.h>

namespace {
void checkCanonical(const CMPath &path)
{
    const QString text = path.toString();
    FUZZ_CHECK(path.isEmpty() == text.isEmpty(), text);
    FUZZ_CHECK(text.isEmpty() || (text.startsWith(QLatin1Char('/')) && text.size() > 1), text);
    FUZZ_CHECK(!text.endsWith(QLatin1Char('/')), text);
    FUZZ_CHECK(!text.contains(QLatin1String("//")), text);

    const CMPath again(text);
    FUZZ_CHECK(again == path && again.hash() == path.hash(), text);
    FUZZ_CHECK(CMPath::fromQVariant(path.toQVariant()) == path, text);
    FUZZ_CHECK(CMPath::fromQVariant(QVariant::fromValue(path)) == path, text);
    FUZZ_CHECK(TavoValue().setPath(path).path() == path, text);
}

/// A path that is split from its end and joined again is the same.
void checkSegments(const CMPath &path)
{
    QStringList segments;
    for (CMPath rest = path; !rest.isEmpty(); rest = rest.parent()) {
        FUZZ_CHECK(!rest.name().isEmpty(), rest);
        FUZZ_CHECK(rest.parent() + rest.name() == rest, rest);
        segments.prepend(rest.name());
        if (segments.size() > 1000) {
            return; // quadratic, and no different from here on
        }
    }
    CMPath built;
    for (const QString &segment : qAsConst(segments)) {
        built = built + segment;
    }
    FUZZ_CHECK(built == path, path);
    FUZZ_CHECK(CMPath() + segments.join(QLatin1Char('/')) == path, path);
}

void checkSum(const CMPath &left, const QString &right)
{
    const CMPath sum = left + right;
    checkCanonical(sum);
    FUZZ_CHECK(sum == CMPath(left.toString() + QLatin1Char('/') + right), sum);
    FUZZ_CHECK(sum.toString().startsWith(left.toString()), sum);
}
} // namespace

void fuzzOne(ByteReader &input)
{
    ValueReader values(input);
    const QString text = values.text();
    const QString other = values.text();
    const CMPath path(text);
    checkCanonical(path);
    checkSegments(path);
    checkSum(path, other);

    const CMPath second(other);
    FUZZ_CHECK((path == second) == (path.toString() == second.toString()), text << " " << other);
    FUZZ_CHECK(path != second || path.hash() == second.hash(), text);

    const QVariant value = values.value();
    const CMPath read = CMPath::fromQVariant(value);
    checkCanonical(read);
    const bool isPath =
        value.userType() == QMetaType::QString || value.userType() == qMetaTypeId<CMPath>();
    FUZZ_CHECK(isPath || read.isEmpty(), value);
    std::ostringstream line;
    line << path << read;
}
