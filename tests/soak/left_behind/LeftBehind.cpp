// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Measures what a message notification leaves behind by design: its node, which stays in the model
// after the message has been closed.
//
// The notifications module runs alone in this process. For each kind of message, it opens and
// cancels one message after the other, so only one is open at a time. The growth of the used heap
// and of the resident memory, divided by the number of messages, is what each leaves behind. The
// last kind also sends a later notification that names the message's node, which removes the node.

#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include <core/tavo.h>

#include <QCoreApplication>
#include <QFile>

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <malloc.h>
#include <memory>
#include <unistd.h>

namespace {
struct Kind
{
    const char *name;
    int messageLength;
    int titleLength;
    bool named; ///< by a later notification
};

constexpr Kind kinds[] = {
    {"message of 20 characters", 20, 0, false},
    {"message of 20, title of 10 characters", 20, 10, false},
    {"message of 200 characters", 200, 0, false},
    {"message of 20 characters, named later", 20, 0, true},
};

struct Memory
{
    long heap;     ///< in use, in bytes
    long resident; ///< in bytes
};

Memory memory()
{
    // Returns free memory at the top to the system first, so that resident memory follows.
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    file.open(QIODevice::ReadOnly);
    const long pages = file.readAll().split(' ').value(1).toLong();
    return {long(mallinfo2().uordblks), pages * sysconf(_SC_PAGESIZE)};
}

TavoValue answerTo(const CMPath &path, const TavoValue &value)
{
    const CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    while (!reply.isFinished()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    if (reply.error().isError()) {
        throw std::runtime_error(reply.error().message().toString().toStdString());
    }
    return {reply.value().toHash()};
}

CMPath open(const TavoNotificationDisplayItem &item)
{
    return answerTo(TavoNotificationDisplayOpenPath(), TavoValue().setNotificationDisplayItem(item))
        .path();
}

void close(const CMPath &path)
{
    answerTo(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path));
}

void showOne(const Kind &kind)
{
    TavoNotificationDisplayItem item;
    item.setMessage(TrString(QString(kind.messageLength, QLatin1Char('m'))));
    if (kind.titleLength > 0) {
        item.setTitle(TrString(QString(kind.titleLength, QLatin1Char('t'))));
    }
    const CMPath path = open(item);
    close(path);
    if (kind.named) {
        close(open(TavoNotificationDisplayItem()
                       .setId(path.toString().section(QLatin1Char('/'), -1))
                       .setPath(CMPath(QStringLiteral("/measure/other")))));
    }
}

void measure(const Kind &kind, int count)
{
    showOne(kind);
    settle();
    const Memory before = memory();
    for (int i = 0; i < count; ++i) {
        showOne(kind);
    }
    settle();
    const Memory after = memory();
    std::printf("| %-38s | %16.1f | %14.1f |\n", kind.name,
                double(after.heap - before.heap) / count,
                double(after.resident - before.resident) / count);
}
} // namespace

int main(int argc, char **argv)
{
    const log4cplus::Initializer log;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    const QCoreApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 0;
    if (count < 1) {
        std::fputs("Usage: soak_left_behind MESSAGES\n", stderr);
        return 2;
    }
    try {
        std::printf("Left behind by each of %d message notifications, in bytes\n\n"
                    "| %-38s |      heap in use |       resident |\n|---|---:|---:|\n",
                    count, "");
        for (const Kind &kind : kinds) {
            // A new module for each kind, since its nodes go with it.
            const LoadedModule module(QStringLiteral(NOTIFICATIONS_MODULE), "notifications");
            measure(kind, count);
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "soak_left_behind: %s\n", error.what());
        return 1;
    }
    return 0;
}
