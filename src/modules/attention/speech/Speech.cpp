// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Speech.h"

#include "SpeechLanguage.h"
#include <core/base/connect.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

#include <attention/MissingFiles.h>
#include <csignal>

namespace {
constexpr int maxTextLength = 1000;
constexpr std::size_t maxJobs = 16;

/// Of a sound. A minute of speech has 3 MiB.
constexpr int maxBytes = 32 << 20;

/// Only a header.
constexpr int emptyBytes = 44;
} // namespace

class Speech::Process : public QProcess
{
protected:
    void setupChildProcess() override
    {
        // The host blocks them in all threads.
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_UNBLOCK, &all, nullptr);
    }
};

Speech::Speech(const Settings &settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_command(settings.command)
{
    m_timeout.setSingleShot(true);
    m_timeout.setInterval(m_settings.timeoutMs);
    tavoConnect(&m_timeout, &QTimer::timeout, this, &Speech::on_timeout_timeout);
}

Speech::~Speech()
{
    if (m_process) {
        m_process->disconnect();
        m_process->kill();
        m_process->waitForFinished(1000);
    }
}

QString Speech::defaultFolder()
{
    const QString service = qEnvironmentVariable("CACHE_DIRECTORY");
    return service.isEmpty()
               ? QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                     QStringLiteral("/tavo/speech")
               : service + QStringLiteral("/speech");
}

void Speech::setCommands(const QStringList &command, const QMap<QString, QStringList> &byLanguage)
{
    m_command = command.isEmpty() ? m_settings.command : command;
    m_languages = byLanguage;
}

QStringList Speech::commandFor(const QString &text, const QString &language) const
{
    const QString spoken = speechLanguage(language, text.left(maxTextLength), m_languages.keys());
    return m_languages.value(spoken, m_command);
}

QString Speech::obstacle(const QString &text, const QString &language) const
{
    const QStringList command = commandFor(text, language);
    return command.isEmpty() ? QStringLiteral("no program for speech is configured")
                             : missingProgram(command.first());
}

void Speech::say(const QString &text, const QString &language, const Receiver &receiver)
{
    const QString said = text.left(maxTextLength);
    const QStringList command = commandFor(said, language);
    const auto refuse = [this, receiver](const QString &reason) {
        QTimer::singleShot(0, this, [receiver, reason] { receiver(Failure{reason}); });
    };
    if (command.isEmpty()) {
        refuse(QStringLiteral("No program for speech is configured"));
        return;
    }
    if (m_jobs.size() >= maxJobs) {
        refuse(QStringLiteral("Too many texts wait to be spoken"));
        return;
    }
    m_jobs.push_back({command, said, fileFor(command, said), receiver});
    if (m_jobs.size() == 1) {
        QTimer::singleShot(0, this, &Speech::startNext);
    }
}

QString Speech::fileFor(const QStringList &command, const QString &text) const
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(command.join(QChar::Null).toUtf8());
    hash.addData(text.toUtf8());
    return m_settings.folder + QLatin1Char('/') + QString::fromLatin1(hash.result().toHex()) +
           QStringLiteral(".wav");
}

void Speech::startNext()
{
    if (m_jobs.empty()) {
        return;
    }
    const Job &job = m_jobs.front();
    QFile kept(job.file);
    if (kept.open(QIODevice::ReadWrite)) {
        if (kept.size() > emptyBytes) {
            // The oldest ones are removed; this one is in use.
            kept.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
            finish(job.file);
            return;
        }
        kept.remove();
    }
    m_sound.clear();
    m_process = std::make_unique<Process>();
    m_process->setProgram(job.command.first());
    m_process->setArguments(job.command.mid(1));
    m_process->setStandardErrorFile(QProcess::nullDevice());
    tavoConnect(m_process.get(), &QProcess::readyReadStandardOutput, this,
                &Speech::on_process_readyRead);
    tavoConnect(m_process.get(), &QProcess::stateChanged, this,
                [this](QProcess::ProcessState state) {
                    if (state == QProcess::NotRunning) {
                        // Not from inside the process's own call.
                        QTimer::singleShot(0, this, &Speech::on_process_ended);
                    }
                });
    m_timeout.start();
    m_process->start();
    m_process->write(job.text.toUtf8());
    m_process->closeWriteChannel();
}

void Speech::on_process_readyRead()
{
    m_sound += m_process->readAllStandardOutput();
    if (m_sound.size() > maxBytes) {
        m_process->kill();
    }
}

void Speech::on_timeout_timeout()
{
    m_process->kill();
}

void Speech::on_process_ended()
{
    const Result<QString> result = takeResult();
    m_process.reset();
    finish(result);
}

Result<QString> Speech::takeResult()
{
    const QString program = m_process->program();
    const bool wasInTime = m_timeout.isActive();
    m_timeout.stop();
    if (m_process->error() == QProcess::FailedToStart) {
        return Failure{program + QStringLiteral(" can't be started: ") + m_process->errorString()};
    }
    if (!wasInTime) {
        return Failure{program + QStringLiteral(" takes too long")};
    }
    const bool isGood = m_process->exitStatus() == QProcess::NormalExit &&
                        m_process->exitCode() == 0 && m_sound.size() > emptyBytes &&
                        m_sound.size() <= maxBytes;
    if (!isGood) {
        return Failure{program + QStringLiteral(" wrote no sound")};
    }
    removeOldest();
    QDir().mkpath(m_settings.folder);
    // Texts may be private.
    constexpr auto ownersOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    QFile::setPermissions(m_settings.folder, ownersOnly | QFileDevice::ExeOwner);
    QSaveFile file(m_jobs.front().file);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(ownersOnly) ||
        file.write(m_sound) != m_sound.size() || !file.commit()) {
        return Failure{file.fileName() + QStringLiteral(": ") + file.errorString()};
    }
    return file.fileName();
}

void Speech::removeOldest() const
{
    const QDir folder(m_settings.folder);
    const QStringList sounds = folder.entryList({QStringLiteral("*.wav")}, QDir::Files, QDir::Time);
    for (const QString &sound : sounds.mid(m_settings.maxSounds - 1)) {
        QFile::remove(folder.filePath(sound));
    }
}

void Speech::finish(const Result<QString> &result)
{
    const Job job = m_jobs.front();
    m_jobs.pop_front();
    if (!m_jobs.empty()) {
        QTimer::singleShot(0, this, &Speech::startNext);
    }
    job.receiver(result);
}
