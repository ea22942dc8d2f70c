// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/tavo.h"

#include <functional>
#include <string>
#include <vector>

/// One field of one record, its types left out, so that a test can go through them all.
struct RecordField
{
    std::string name; ///< "Record.key"
    QString key;

    std::function<bool(const QVariantHash &record)> readsDefault;
    std::function<bool(const QVariantHash &record)> readsSample;
    std::function<QVariantHash()> withSample; ///< a record made with the setter
    std::function<bool()> setterReturnsTheRecord;
    QVariantList unsuitable; ///< what the field's type can't be read from
};

/// Every field of every record that the library has.
const std::vector<RecordField> &recordFields();
