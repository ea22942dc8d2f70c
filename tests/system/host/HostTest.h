// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/host/HostProcess.h"
#include "support/Text.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

/// A host that searches the folder of the modules for tests.
class HostTest : public testing::Test
{
protected:
    /// An event logged by a scripted worker.
    struct Event
    {
        QString what;
        QString thread;
    };

    HostTest() { m_host.addArguments({QStringLiteral("--module-path"), modulesFolder()}); }

    void TearDown() override
    {
        if (HasFailure()) {
            std::cout << "The host wrote:\n" << m_host.log().toStdString() << std::endl;
        }
    }

    static QString modulesFolder() { return QStringLiteral(TAVO_TEST_MODULES); }

    static QString moduleFile(const QString &library)
    {
        return modulesFolder() + QStringLiteral("/libtavo_%1.so").arg(library);
    }

    static QJsonObject scripted(const QString &name, const QJsonObject &config = {})
    {
        return {{QStringLiteral("name"), name},
                {QStringLiteral("library"), QStringLiteral("scripted")},
                {QStringLiteral("config"), config}};
    }

    static QJsonObject configurationOf(const QJsonArray &modules)
    {
        return {{QStringLiteral("modules"), modules}};
    }

    /// The events as "worker event", in the order of the log.
    std::vector<Event> events() const
    {
        static const QRegularExpression s_event(
            QStringLiteral("Scripted \\[[^]]*\\] (\\S+ \\S+) in (\\d+)\\."));
        std::vector<Event> events;
        for (const QString &line : m_host.logLines()) {
            const auto match = s_event.match(line);
            if (match.hasMatch()) {
                events.push_back({match.captured(1), match.captured(2)});
            }
        }
        return events;
    }

    std::vector<std::string> eventNames(const std::vector<std::string> &kinds) const
    {
        std::vector<std::string> names;
        for (const Event &event : events()) {
            const std::string what = event.what.toStdString();
            const std::string kind = what.substr(what.find(' ') + 1);
            if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) {
                names.push_back(what);
            }
        }
        return names;
    }

    /// The thread that logged an event, or empty.
    QString threadOf(const QString &what) const
    {
        for (const Event &event : events()) {
            if (event.what == what) {
                return event.thread;
            }
        }
        return {};
    }

    QString makeFifo(const QString &name) const
    {
        QString path = m_host.folder() + QLatin1Char('/') + name;
        if (mkfifo(QFile::encodeName(path).constData(), 0600) != 0) {
            throw std::runtime_error("no FIFO");
        }
        return path;
    }

    /// Opens the FIFO, so whatever waits for it continues.
    static void releaseFifo(const QString &path)
    {
        const int descriptor = open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC);
        close(descriptor);
    }

    HostProcess m_host;
};
