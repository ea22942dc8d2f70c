// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/numbers.h"

#include <cmath>

bool tavoIsNumber(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Char:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

namespace {
/// Beyond 2^53, a double can't represent every integer.
constexpr double maxExactInteger = 9007199254740992.0;
} // namespace

qint64 tavoReadInteger(const QVariant &value, qint64 min, qint64 max)
{
    if (!tavoIsNumber(value)) {
        return 0;
    }
    qint64 number = 0;
    if (value.userType() == QMetaType::Double || value.userType() == QMetaType::Float) {
        const double fraction = value.toDouble();
        if (!(std::abs(fraction) <= maxExactInteger) || std::trunc(fraction) != fraction) {
            return 0;
        }
        number = static_cast<qint64>(fraction);
    } else {
        number = value.toLongLong();
        // Too large for a qint64: the conversion has wrapped round.
        if (number < 0 && value.userType() == QMetaType::ULongLong) {
            return 0;
        }
    }
    return number < min || number > max ? 0 : number;
}

bool tavoReadBool(const QVariant &value)
{
    if (value.userType() == QMetaType::Bool) {
        return value.toBool();
    }
    return tavoIsNumber(value) && value.toDouble() != 0;
}

double tavoReadDouble(const QVariant &value)
{
    return tavoIsNumber(value) ? value.toDouble() : 0;
}
