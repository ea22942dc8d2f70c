// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/broker/Broker.h"

#include "support/program/BoundProcess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>

#include <csignal>
#include <stdexcept>

namespace {
constexpr int timeoutMs = 20000;

int freePort()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost)) {
        throw std::runtime_error("no port is free");
    }
    return server.serverPort();
}

QString tlsConfiguration(const Certificates &certificates, const Identity &server,
                         const QString &access)
{
    QString text = QStringLiteral("cafile %1\ncertfile %2\nkeyfile %3\n"
                                  "require_certificate true\nuse_identity_as_username true\n"
                                  "set_tcp_nodelay true\nmax_queued_messages 0\n")
                       .arg(certificates.authority(), server.certificate, server.key);
    if (!access.isEmpty()) {
        text += QStringLiteral("acl_file %1\n").arg(access);
    }
    return text;
}
} // namespace

Broker::Broker(const QString &configuration)
    : m_configuration(configuration)
{
    start();
}

Broker::Broker(const Certificates &certificates, const Identity &server, const QString &access)
    : m_configuration(tlsConfiguration(certificates, server, access))
    , m_hasTls(true)
{
    start();
}

Broker::~Broker()
{
    kill();
}

QString Broker::uri() const
{
    return QStringLiteral("%1://127.0.0.1:%2")
        .arg(m_hasTls ? QStringLiteral("mqtts") : QStringLiteral("mqtt"))
        .arg(m_port);
}

QString Broker::log() const
{
    QFile file(m_folder.filePath(QStringLiteral("log")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void Broker::stop()
{
    if (m_process == nullptr) {
        return;
    }
    resume();
    m_process->terminate();
    m_process->waitForFinished(timeoutMs);
    kill();
}

void Broker::kill()
{
    if (m_process != nullptr) {
        m_process->kill();
        m_process->waitForFinished(timeoutMs);
        m_process.reset();
    }
}

void Broker::pause()
{
    ::kill(pid_t(m_process->processId()), SIGSTOP);
}

void Broker::resume()
{
    ::kill(pid_t(m_process->processId()), SIGCONT);
}

void Broker::start()
{
    if (m_process != nullptr) {
        return;
    }
    if (m_port != 0) {
        if (!tryToStart()) {
            throw std::runtime_error("the broker doesn't start: " + log().toStdString());
        }
        return;
    }
    // Between the search for a port and its use, another program may take it.
    constexpr int attempts = 5;
    for (int i = 0; i < attempts; ++i) {
        m_port = freePort();
        if (tryToStart()) {
            return;
        }
    }
    throw std::runtime_error("the broker doesn't start: " + log().toStdString());
}

bool Broker::tryToStart()
{
    const QString name = m_folder.filePath(QStringLiteral("mosquitto.conf"));
    QFile file(name);
    // For the user that starts it, or root: else mosquitto would become a user of its own, which
    // can't read the test's files.
    const QString text = QStringLiteral("user root\n"
                                        "log_dest stderr\n"
                                        "persistence_location %1/\n"
                                        "listener %2 127.0.0.1\n%3")
                             .arg(folder())
                             .arg(m_port)
                             .arg(m_configuration);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        throw std::runtime_error("the broker's configuration can't be written");
    }
    file.close();
    const int sizeBefore = log().size();
    m_process = std::make_unique<BoundProcess>();
    m_process->setStandardErrorFile(m_folder.filePath(QStringLiteral("log")), QIODevice::Append);
    // Debian has it where ordinary users' PATH does not look.
    m_process->start(QStringLiteral("/usr/sbin/mosquitto"), {QStringLiteral("-c"), name});
    QElapsedTimer since;
    since.start();
    constexpr int pollMs = 5;
    while (!m_process->waitForFinished(pollMs) && since.elapsed() < timeoutMs) {
        if (log().mid(sizeBefore).contains(QLatin1String(" running\n"))) {
            return true;
        }
    }
    kill();
    return false;
}
