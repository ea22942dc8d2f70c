// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Measures the heap that each queued sound, open notification and leftover message node takes.
// Prints a JSON object of names and bytes.

#include "ModelBench.h"

#include <QCoreApplication>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <cstdio>
#include <cstdlib>
#include <malloc.h>

namespace {
/// Bytes that the program has allocated and not freed.
double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd);
}

double soundBytes(int count)
{
    BenchModule module;
    const double before = heapInUse();
    for (int i = 0; i < count; ++i) {
        module.request(TavoNotificationPlayerEnqueuePath(), soundRequest(i));
    }
    return (heapInUse() - before) / count;
}

struct DisplayBytes
{
    double open;
    double left;
};

QVariantList openPaths()
{
    const CMReply<QVariant> reply;
    CMRoot()->request(CMGetRowsRequest(TavoNotificationDisplayQueuePath(), 0, -1, reply));
    return reply.value().toList();
}

/// Reads the rows and drops them.
void closeAll(const BenchModule &module)
{
    const QVariantList rows = openPaths();
    for (const QVariant &row : rows) {
        module.request(TavoNotificationDisplayCancelNotifyPath(),
                       displayCancelRequest(CMPath::fromQVariant(row)));
    }
}

DisplayBytes displayBytes(int count)
{
    BenchModule module;
    const double before = heapInUse();
    for (int i = 0; i < count; ++i) {
        module.request(TavoNotificationDisplayOpenPath(), messageRequest(i));
    }
    const double open = heapInUse();
    closeAll(module);
    return {(open - before) / count, (heapInUse() - before) / count};
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_NO_GLIB", "1");
    const log4cplus::Initializer initializer;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::FATAL_LOG_LEVEL);
    const QCoreApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 100000;
    const double sound = soundBytes(count);
    const DisplayBytes display = displayBytes(count);
    std::printf("{\"count\": %d, \"queuedSound\": %.0f, \"openNotification\": %.0f, "
                "\"closedMessage\": %.0f}\n",
                count, sound, display.open, display.left);
    return 0;
}
