// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <core/tavo.h>

#include <chrono>
#include <cstdlib>
#include <thread>

// A module that crashes in its constructor, or hangs soon after it, as its configuration says ("does").
// scripts/service-test builds it with the installed headers.

namespace {
class UnrulyWorker : public CMNodesWorker
{
public:
    explicit UnrulyWorker(const QVariantHash &config)
        : CMNodesWorker(config, QStringLiteral("Unruly"))
    {
        if (config.value(QStringLiteral("does")) == QLatin1String("crash")) {
            std::abort();
        }
        QMetaObject::invokeMethod(
            this, [] { std::this_thread::sleep_for(std::chrono::hours(1)); }, Qt::QueuedConnection);
    }
};
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char * /*name*/, void *config)
{
    CMWorker *worker = new UnrulyWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}
