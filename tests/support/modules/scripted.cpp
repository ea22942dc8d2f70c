// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/export.h"
#include "core/model/cmreconfigurable.h"
#include "core/model/cmrequest.h"
#include "core/model/cmworker.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QVariantHash>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

// A worker that logs its life under the logger "Scripted" and does what its configuration says, so
// that tests can observe the host:
//
//   create        "throw", "throwNumber", "crash" or "null": what worker_create does instead
//   createWaits   a FIFO that worker_create waits for
//   workWaits     a FIFO that the worker waits for in its event loop
//   deleteWaits   a FIFO that the destructor waits for
//   say           a text that is logged as Qt's debug, info, warning and critical message, and as a
//                 warning of the category "scripted.category"
//   fatal         a text for qFatal() in the worker's event loop
//   throw         a text that the worker throws in its event loop
//   quit          whether the worker ends the program's event loop
//   echo          any value: logged as it was received, at the start and at each reload
//   refuse        a text that the worker throws at a reload
//   restart       a list of keys that need a restart, as the worker says at a reload

namespace {
log4cplus::Logger s_logger = log4cplus::Logger::getInstance("Scripted");

void waitForFifo(const QVariant &path)
{
    // Opening a FIFO blocks until the other end is opened.
    const int descriptor = open(path.toString().toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw std::runtime_error("no FIFO to wait for");
    }
    close(descriptor);
}

void sayEverything(const QByteArray &text)
{
    static const QLoggingCategory s_category("scripted.category");
    qDebug("debug %s", text.constData());
    qInfo("info %s", text.constData());
    qWarning("warning %s", text.constData());
    qCritical("critical %s", text.constData());
    qCWarning(s_category, "category %s", text.constData());
}

class ScriptedWorker : public CMWorker, public CMReconfigurable
{
public:
    ScriptedWorker(std::string name, const QVariantHash &config)
        : m_name(std::move(name))
        , m_config(config)
    {
        log("created");
        QMetaObject::invokeMethod(this, &ScriptedWorker::work, Qt::QueuedConnection);
    }

    ~ScriptedWorker() override
    {
        log("deleting");
        if (m_config.contains(QStringLiteral("deleteWaits"))) {
            waitForFifo(m_config.value(QStringLiteral("deleteWaits")));
        }
        log("deleted");
    }

    void request(CMRequest) override {}

    QStringList reconfigure(const QVariantHash &config) override
    {
        if (config.contains(QStringLiteral("refuse"))) {
            throw std::runtime_error(
                config.value(QStringLiteral("refuse")).toString().toStdString());
        }
        log("echo " + config.value(QStringLiteral("echo")).toString().toStdString());
        return config.value(QStringLiteral("restart")).toStringList();
    }

private:
    void work()
    {
        if (m_config.contains(QStringLiteral("echo"))) {
            log("echo " + m_config.value(QStringLiteral("echo")).toString().toStdString());
        }
        for (int i = 1; i <= m_config.value(QStringLiteral("flood")).toInt(); ++i) {
            LOG4CPLUS_WARN(s_logger, "flood " << i << ".");
        }
        for (int i = 1; i <= m_config.value(QStringLiteral("traces")).toInt(); ++i) {
            LOG4CPLUS_TRACE(s_logger, "trace " << i << ".");
        }
        if (m_config.contains(QStringLiteral("say"))) {
            sayEverything(m_config.value(QStringLiteral("say")).toByteArray());
        }
        if (m_config.contains(QStringLiteral("fatal"))) {
            qFatal("%s", m_config.value(QStringLiteral("fatal")).toByteArray().constData());
        }
        if (m_config.value(QStringLiteral("quit")).toBool()) {
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        }
        if (m_config.contains(QStringLiteral("throw"))) {
            throw std::runtime_error(
                m_config.value(QStringLiteral("throw")).toString().toStdString());
        }
        log("working");
        if (m_config.contains(QStringLiteral("workWaits"))) {
            waitForFifo(m_config.value(QStringLiteral("workWaits")));
        }
    }

    void log(const std::string &event)
    {
        LOG4CPLUS_INFO(s_logger, m_name << " " << event << " in " << gettid() << ".");
        LOG4CPLUS_TRACE(s_logger, m_name << " traces " << event);
    }

    std::string m_name;
    QVariantHash m_config;
};
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    const auto &settings = *static_cast<const QVariantHash *>(config);
    const QString action = settings.value(QStringLiteral("create")).toString();
    LOG4CPLUS_INFO(s_logger, name << " creating in " << gettid() << ".");
    if (settings.contains(QStringLiteral("createWaits"))) {
        waitForFifo(settings.value(QStringLiteral("createWaits")));
    }
    if (action == QLatin1String("throw")) {
        throw std::runtime_error("the script says so");
    }
    if (action == QLatin1String("crash")) {
        std::abort();
    }
    if (action == QLatin1String("throwNumber")) {
        throw 42;
    }
    if (action == QLatin1String("null")) {
        return nullptr;
    }
    return new ScriptedWorker(name, settings);
}
