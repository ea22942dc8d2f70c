// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/host/HostProcess.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QSocketNotifier>
#include <QTimer>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

/// The process and the pipe on which it reports that it is ready. The host inherits only its own
/// end of the pipe: with the other one, it would not notice that the test has ended.
class HostProcess::Process : public QProcess
{
public:
    Process()
        : m_ends(makePipe())
        , m_notifier(m_ends[0], QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this, [this] { readReady(); });
    }

    ~Process() override
    {
        m_notifier.setEnabled(false);
        ::close(m_ends[0]);
        closeWriteEnd();
    }

    int writeEnd() const { return m_ends[1]; }
    bool isReady() const { return m_readyText == "ready\n" && m_closed; }
    bool isClosed() const { return m_closed; }

    void closeWriteEnd()
    {
        if (m_ends[1] >= 0) {
            ::close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

protected:
    void setupChildProcess() override { fcntl(m_ends[1], F_SETFD, 0); }

private:
    static std::array<int, 2> makePipe()
    {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe for a host process");
        }
        return ends;
    }

    void readReady()
    {
        std::array<char, 64> buffer{};
        const ssize_t size = ::read(m_ends[0], buffer.data(), buffer.size());
        if (size > 0) {
            m_readyText.append(buffer.data(), static_cast<int>(size));
            return;
        }
        m_closed = true;
        m_notifier.setEnabled(false);
    }

    std::array<int, 2> m_ends;
    QSocketNotifier m_notifier;
    QByteArray m_readyText;
    bool m_closed = false;
};

HostProcess::HostProcess()
    : m_program(QStringLiteral(TAVO_HOST_PROGRAM))
    , m_environment(QProcessEnvironment::systemEnvironment())
    , m_process(std::make_unique<Process>())
{
    m_environment.remove(QStringLiteral("TAVO_MODULE_PATH"));
    m_environment.remove(QStringLiteral("DBUS_STARTER_ADDRESS"));
    m_environment.remove(QStringLiteral("TAVO_LOG_LEVEL"));
    // Tests do not use the bus of the user who runs them.
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                         QStringLiteral("unix:path=/nonexistent"));
    // Nor the user's settings and history.
    m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_folder.path());
    m_environment.insert(QStringLiteral("XDG_STATE_HOME"), m_folder.path());
}

HostProcess::~HostProcess()
{
    if (isRunning()) {
        m_process->kill();
        m_process->waitForFinished();
    }
}

QString HostProcess::writeFile(const QString &name, const QByteArray &content)
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        throw std::runtime_error("can't write " + file.fileName().toStdString());
    }
    return file.fileName();
}

QString HostProcess::setConfiguration(const QJsonObject &configuration)
{
    return setConfigurationText(QJsonDocument(configuration).toJson());
}

QString HostProcess::setConfigurationText(const QByteArray &json)
{
    QString file = writeFile(QStringLiteral("host.json"), json);
    addArguments({QStringLiteral("--config"), file});
    return file;
}

void HostProcess::setEnvironment(const QString &variable, const QString &value)
{
    m_environment.insert(variable, value);
}

bool HostProcess::start()
{
    const auto collect = [this] {
        m_log += m_process->readAllStandardError();
        m_output += m_process->readAllStandardOutput();
    };
    QObject::connect(m_process.get(), &QProcess::readyReadStandardError, collect);
    QObject::connect(m_process.get(), &QProcess::readyReadStandardOutput, collect);
    m_process->setProcessEnvironment(m_environment);
    if (!m_arguments.contains(QStringLiteral("--ready-fd"))) {
        addArguments({QStringLiteral("--ready-fd"), QString::number(m_process->writeEnd())});
    }
    m_process->start(m_program, m_arguments);
    const bool started = m_process->waitForStarted();
    m_process->closeWriteEnd();
    return started;
}

bool HostProcess::startReady()
{
    return start() && waitReady();
}

int HostProcess::run()
{
    return start() ? waitForExit() : -1;
}

bool HostProcess::waitReady()
{
    waitUntil([this] { return isReady() || !isRunning(); });
    return isReady();
}

bool HostProcess::waitForLog(const QString &text)
{
    waitUntil([&] { return log().contains(text) || !isRunning(); });
    return log().contains(text);
}

int HostProcess::waitForExit()
{
    const bool ended = waitUntil([this] { return !isRunning() && m_process->isClosed(); });
    return ended && !crashed() ? m_process->exitCode() : -1;
}

void HostProcess::sendSignal(int signal)
{
    ::kill(static_cast<pid_t>(m_process->processId()), signal);
}

int HostProcess::stop()
{
    sendSignal(SIGTERM);
    return waitForExit();
}

bool HostProcess::isReady() const
{
    return m_process->isReady();
}

bool HostProcess::isRunning() const
{
    return m_process->state() != QProcess::NotRunning;
}

bool HostProcess::crashed() const
{
    return !isRunning() && m_process->exitStatus() == QProcess::CrashExit;
}

qint64 HostProcess::processId() const
{
    return m_process->processId();
}

QStringList HostProcess::logLines() const
{
    return log().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool HostProcess::waitUntil(const std::function<bool()> &condition)
{
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(s_timeout);
    while (!condition() && limit.isActive()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return condition();
}
