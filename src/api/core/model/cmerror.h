// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/base/trstring.h"

#include <QVariantHash>

/// Why a request failed: a hash with a name (of the kind of error, or of the module that reports
/// it), a message for people and a title for the message. An error without a name means that
/// nothing failed. A value; copies share their data.
class TAVO_API_EXPORT CMError : public QVariantHash
{
public:
    CMError() = default;
    /// Reads an error from a hash with those keys.
    CMError(const QVariantHash &fields)
        : QVariantHash(fields)
    {
    }

    /// An error with the default title.
    CMError(const QString &name, const TrString &message);

    // The keys.
    /// The key of the name: a string.
    static QString Name();
    /// The key of the message: a TrString as a variant.
    static QString Message();
    /// The key of the title: a TrString as a variant.
    static QString Title();

    /// The title of errors that have no other.
    static TrString DefaultTitle();

    /// Returns whether something failed.
    bool isError() const { return !name().isEmpty(); }
    /// Identifies the error for programs; empty if nothing failed.
    QString name() const { return value(Name()).toString(); }
    /// Says to people what failed.
    TrString message() const { return TrString::fromQVariant(value(Message())); }
    /// A heading for the message.
    TrString title() const { return TrString::fromQVariant(value(Title())); }
};

/// The names of the model's own errors. Modules use their own names.
namespace CMErrors {
TAVO_API_EXPORT QString noSuchNode();   ///< nothing is published at the path
TAVO_API_EXPORT QString notSupported(); ///< the node does not take this kind of request
TAVO_API_EXPORT QString noAnswer();     ///< the request was dropped without an answer
} // namespace CMErrors

Q_DECLARE_METATYPE(CMError)
