// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/module/ModuleHost.h"

#include <QLibrary>

#include <log4cplus/configurator.h>
#include <log4cplus/nullappender.h>

#include <stdexcept>

/// The number of events posted to the calling thread. Qt exports it without declaring it.
Q_CORE_EXPORT uint qGlobalPostedEventsCount();

namespace {
std::function<void(const char *)> &lastWordsOfProcess()
{
    static std::function<void(const char *)> function;
    return function;
}

void handleMessage(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    if (type == QtFatalMsg) {
        lastWordsOfProcess()(message.toLocal8Bit().constData());
    }
}

QCoreApplication *makeApplication()
{
    // The virtual clock works with Qt's own event loop, not with GLib's.
    qputenv("QT_NO_GLIB", "1");
    static int count = 1;
    static char name[] = "explorer";
    static char *arguments[] = {name, nullptr};
    return new QCoreApplication(count, arguments);
}

LogCapture *makeLog()
{
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    root.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    return new LogCapture("Notifications", log4cplus::FATAL_LOG_LEVEL);
}
} // namespace

ModuleHost::ModuleHost(const std::string &module, std::function<void(const char *)> lastWords)
    : m_application(makeApplication())
    , m_log(makeLog())
{
    lastWordsOfProcess() = std::move(lastWords);
    qInstallMessageHandler(handleMessage);
    QLibrary library(QString::fromStdString(module));
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    m_create = reinterpret_cast<WorkerCreate>(library.resolve("worker_create"));
    if (m_create == nullptr) {
        throw std::runtime_error(library.errorString().toStdString());
    }
}

std::unique_ptr<CMWorker> ModuleHost::makeWorker()
{
    std::unique_ptr<CMWorker> worker(static_cast<CMWorker *>(m_create("notifications", &m_config)));
    settle();
    return worker;
}

int ModuleHost::fatalRecords() const
{
    return m_log->countAt(log4cplus::FATAL_LOG_LEVEL);
}

void ModuleHost::settle()
{
    // Events posted during a round are delivered in the next.
    do {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::sendPostedEvents();
    } while (qGlobalPostedEventsCount() != 0);
}

CMReply<QVariant> ModuleHost::request(const CMPath &path, const QVariant &value)
{
    CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    settle();
    return reply;
}

int runExplorer(const exploration::Program &program, int argc, char **argv)
{
    log4cplus::deinitialize();
    return program.run(argc, argv);
}
