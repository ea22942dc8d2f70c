// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/tavo.h"

#include <functional>
#include <string>
#include <vector>

/// A field of a record without its types, so that a test can loop over all fields.
struct RecordField
{
    std::string name; ///< "Record.key"
    QString key;

    std::function<bool(const QVariantHash &record)> readsDefault;
    std::function<bool(const QVariantHash &record)> readsSample;
    std::function<QVariantHash()> withSample; ///< a record made with the setter
    std::function<bool()> setterReturnsTheRecord;
    QVariantList unsuitable; ///< values from which the field can't be read
};

/// Every field of every record in the library.
const std::vector<RecordField> &recordFields();
