// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/QtLog.h"

#include "base/Printable.h"

#include <log4cplus/logger.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {
log4cplus::LogLevel levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return log4cplus::DEBUG_LOG_LEVEL;
    case QtInfoMsg:
        return log4cplus::INFO_LOG_LEVEL;
    case QtWarningMsg:
        return log4cplus::WARN_LOG_LEVEL;
    case QtCriticalMsg:
        return log4cplus::ERROR_LOG_LEVEL;
    case QtFatalMsg:
        break;
    }
    return log4cplus::FATAL_LOG_LEVEL;
}

std::string loggerNameOf(const char *category)
{
    if (category == nullptr || std::strcmp(category, "default") == 0) {
        return "Qt";
    }
    return std::string("Qt.") + category;
}
} // namespace

void logQtMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const std::string text = message.toStdString();
    const auto logger = log4cplus::Logger::getInstance(loggerNameOf(context.category));
    logger.log(levelOf(type), text, context.file, context.line,
               context.function != nullptr ? context.function : "");
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", printable(message).toUtf8().constData());
        std::fflush(stderr);
    }
}
