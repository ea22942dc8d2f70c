// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/support/Values.h"

#include <cstring>
#include <utility>
#include <vector>

namespace {
/// The values still to be visited. An explicit stack, since values can nest deeper than calls.
using Pairs = std::vector<std::pair<QVariant, QVariant>>;

template <typename Fields>
bool pushFields(const Fields &left, const Fields &right, Pairs &pairs)
{
    if (left.size() != right.size()) {
        return false;
    }
    for (auto field = left.begin(); field != left.end(); ++field) {
        const auto other = right.constFind(field.key());
        if (other == right.constEnd()) {
            return false;
        }
        pairs.emplace_back(*field, *other);
    }
    return true;
}

bool isSameScalar(const QVariant &left, const QVariant &right)
{
    if (left.userType() == QMetaType::Double) {
        const double numbers[] = {left.toDouble(), right.toDouble()};
        return std::memcmp(&numbers[0], &numbers[1], sizeof(double)) == 0;
    }
    if (left.userType() == QMetaType::Float) {
        return std::memcmp(left.constData(), right.constData(), sizeof(float)) == 0;
    }
    return left == right;
}

bool pushOrCompare(const QVariant &left, const QVariant &right, Pairs &pairs)
{
    if (left.userType() != right.userType()) {
        return false;
    }
    switch (left.userType()) {
    case QMetaType::UnknownType:
        return true;
    case QMetaType::QVariantHash:
        return pushFields(left.toHash(), right.toHash(), pairs);
    case QMetaType::QVariantMap:
        return pushFields(left.toMap(), right.toMap(), pairs);
    case QMetaType::QVariantList: {
        const QVariantList elements = left.toList();
        const QVariantList others = right.toList();
        if (elements.size() != others.size()) {
            return false;
        }
        for (int i = 0; i < elements.size(); ++i) {
            pairs.emplace_back(elements.at(i), others.at(i));
        }
        return true;
    }
    default:
        return isSameScalar(left, right);
    }
}

bool isPlainScalar(int type)
{
    switch (type) {
    case QMetaType::UnknownType:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QStringList:
        return true;
    default:
        return false;
    }
}
} // namespace

bool isSame(const QVariant &left, const QVariant &right)
{
    Pairs pairs{{left, right}};
    while (!pairs.empty()) {
        const auto [one, other] = std::move(pairs.back());
        pairs.pop_back();
        if (!pushOrCompare(one, other, pairs)) {
            return false;
        }
    }
    return true;
}

bool isPlainData(const QVariant &value)
{
    std::vector<QVariant> values{value};
    while (!values.empty()) {
        const QVariant each = std::move(values.back());
        values.pop_back();
        const int type = each.userType();
        if (type == QMetaType::QVariantList) {
            const QVariantList elements = each.toList();
            values.insert(values.end(), elements.begin(), elements.end());
        } else if (type == QMetaType::QVariantHash || type == QMetaType::QVariantMap) {
            const QVariantHash fields = each.toHash();
            values.insert(values.end(), fields.begin(), fields.end());
        } else if (!isPlainScalar(type)) {
            return false;
        }
    }
    return true;
}
