// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/tavo.h"

#include <string>
#include <vector>

/// A field of a record without its types, so that a test can loop over all fields.
class RecordField
{
public:
    RecordField(const char *record, const char *key, const QVariantList &unsuitable);
    virtual ~RecordField() = default;
    Q_DISABLE_COPY_MOVE(RecordField)

    virtual bool readsDefault(const QVariantHash &record) const = 0;
    virtual bool readsSample(const QVariantHash &record) const = 0;
    virtual QVariantHash withSample() const = 0; ///< a record made with the setter
    virtual bool setterReturnsTheRecord() const = 0;

    const std::string name; ///< "Record.key"
    const QString key;
    const QVariantList unsuitable; ///< values from which the field can't be read
};

/// Every field of every record in the library.
const std::vector<const RecordField *> &recordFields();
