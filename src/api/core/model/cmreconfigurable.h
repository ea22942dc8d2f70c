// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QStringList>
#include <QVariantHash>

/// A worker that also derives from this class takes a changed configuration while it runs. For any other
/// worker, each changed key takes effect when the host is restarted.
///
/// Used by the host, in the worker's thread.
class TAVO_API_EXPORT CMReconfigurable
{
public:
    virtual ~CMReconfigurable();

    /// Takes the module's whole configuration in place of the one before, and applies what can change.
    /// Returns the keys whose new values take effect only when the host is restarted. Called at each
    /// reload, also when nothing has changed, and again with the previous configuration when another
    /// module has refused the new one.
    ///
    /// Throws a std::exception, such as that of TavoConfiguration, if the configuration is wrong, and
    /// then changes nothing.
    virtual QStringList reconfigure(const QVariantHash &config) = 0;
};
