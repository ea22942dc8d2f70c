// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Loads modules and creates their workers, in the order of the arguments. Prints a JSON array with
// the microseconds that each took. The platform's library is loaded beforehand.

#include "../Moment.h"
#include <core/tavo.h>

#include <QCoreApplication>
#include <QLibrary>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace {
std::unique_ptr<CMWorker> makeWorker(const QString &file, QVariantHash *config)
{
    using WorkerCreate = void *(*)(const char *, void *);
    QLibrary library(file);
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    const auto create = reinterpret_cast<WorkerCreate>(library.resolve("worker_create"));
    if (create == nullptr) {
        qFatal("%s", qPrintable(library.errorString()));
    }
    return std::unique_ptr<CMWorker>(static_cast<CMWorker *>(create("module", config)));
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_NO_GLIB", "1");
    const log4cplus::Initializer initializer;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::INFO_LOG_LEVEL);
    const QCoreApplication application(argc, argv);
    CMRoot();
    QVariantHash config;
    std::vector<std::unique_ptr<CMWorker>> workers;
    const char *separator = "[";
    for (const QString &file : QCoreApplication::arguments().mid(1)) {
        const std::int64_t before = momentNow();
        workers.push_back(makeWorker(file, &config));
        std::printf("%s%.1f", separator, double(momentNow() - before) * 1e-3);
        separator = ", ";
    }
    std::printf("]\n");
    return 0;
}
