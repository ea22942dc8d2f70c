// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmrequest.h"
#include "core/records/cmpath.h"

namespace {
/// Queued calls look up argument types by name, which must work from the first connection on.
const bool registered = [] {
    qRegisterMetaType<CMPath>("CMPath");
    qRegisterMetaType<CMVoidReply>("CMVoidReply");
    qRegisterMetaType<CMSetDataRequest>("CMSetDataRequest");
    QMetaType::registerConverter<QString, CMPath>(
        [](const QString &text) { return CMPath::fromQVariant(text); });
    return QMetaType::registerConverter<CMPath, QString>(&CMPath::toString);
}();
} // namespace
