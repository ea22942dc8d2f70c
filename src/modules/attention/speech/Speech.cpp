// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Speech.h"

#include "SpeechLanguage.h"
#include <core/base/connect.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <attention/MissingFiles.h>
#include <csignal>
#include <fcntl.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace {
constexpr int maxTextLength = 1000;
constexpr int maxWaiting = 16; // of a user
constexpr int maxHeld = 32;    // of a user, from a priority on: more would fill the disk
constexpr const char *tooMany = "Too many texts wait to be spoken";

/// Of a sound. A minute of speech has 3 MiB.
constexpr int maxBytes = 32 << 20;

constexpr qint64 maxKeptBytes = 64 << 20;

/// Only a header.
constexpr int emptyBytes = 44;
} // namespace

class Speech::Process : public QProcess
{
public:
    Process() { setProcessChannelMode(QProcess::ForwardedErrorChannel); }

protected:
    void setupChildProcess() override
    {
        // Here, because the system may take long to open it.
        if (const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC); nothing >= 0) {
            ::dup2(nothing, STDERR_FILENO);
        }
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
    m_writer.setExpiryTimeout(0); // A thread that does nothing would stay for half a minute.
}

Speech::~Speech()
{
    if (m_process) {
        m_process->disconnect();
        m_process->kill();
        m_process->waitForFinished(1000);
    }
    m_writer.waitForDone();
    if (m_job && m_job->isPrivate) {
        QFile::remove(m_job->file); // nobody has got it yet
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

void Speech::say(const Request &request, const Receiver &receiver)
{
    const QString said = request.text.left(maxTextLength);
    const QStringList command = commandFor(said, request.language);
    if (command.isEmpty()) {
        refuse(receiver, "No program for speech is configured");
        return;
    }
    if (!makeRoom(request.user, request.priority)) {
        refuse(receiver, tooMany);
        return;
    }
    const QString file = request.isPrivate ? ownFile() : fileFor(command, said);
    m_waiting.push_back({command, said, file, request.user, request.priority, request.isPrivate,
                         receiver, ++m_lastTurn});
    if (m_process && request.priority > m_job->priority &&
        !holdsTooMany(request.user, request.priority)) {
        m_isPutOff = true;
        m_process->kill();
    }
    if (!m_job) {
        QTimer::singleShot(0, this, &Speech::startNext);
    }
}

bool Speech::makeRoom(const QString &user, TavoNotificationItemPriority::Enum priority)
{
    const auto isOfUser = [&user](const Job &job) { return job.user == user; };
    if (std::count_if(m_waiting.begin(), m_waiting.end(), isOfUser) < maxWaiting) {
        return true;
    }
    const auto least =
        std::min_element(m_waiting.begin(), m_waiting.end(), [&](const Job &job, const Job &other) {
            return isOfUser(job) && (!isOfUser(other) || job.priority < other.priority);
        });
    if (least->priority >= priority) {
        return false;
    }
    refuse(least->receiver, tooMany);
    m_waiting.erase(least);
    return true;
}

void Speech::refuse(const Receiver &receiver, const char *reason)
{
    QTimer::singleShot(0, this,
                       [receiver, reason] { receiver(Failure{QString::fromLatin1(reason)}); });
}

QString Speech::fileFor(const QStringList &command, const QString &text) const
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(command.join(QChar::Null).toUtf8());
    hash.addData(text.toUtf8());
    return m_settings.folder + QLatin1Char('/') + QString::fromLatin1(hash.result().toHex()) +
           QStringLiteral(".wav");
}

QString Speech::ownFile() const
{
    return m_settings.folder + QLatin1Char('/') + tavoGenerateUuid() + QStringLiteral(".wav");
}

std::optional<Speech::Job> Speech::takeNext()
{
    auto next = m_waiting.end();
    for (auto job = m_waiting.begin(); job != m_waiting.end(); ++job) {
        const bool isSooner = next == m_waiting.end() || std::tie(next->priority, job->turn) <
                                                             std::tie(job->priority, next->turn);
        if (isSooner && !holdsTooMany(job->user, job->priority)) {
            next = job;
        }
    }
    if (next == m_waiting.end()) {
        return std::nullopt;
    }
    Job job = std::move(*next);
    m_waiting.erase(next);
    return job;
}

bool Speech::holdsTooMany(const QString &user, TavoNotificationItemPriority::Enum priority) const
{
    return std::count_if(m_held.begin(), m_held.end(), [&](const Held &held) {
               return held.user == user && held.priority >= priority && !held.file.expired();
           }) >= maxHeld;
}

bool Speech::isHeld(const QString &file) const
{
    return std::any_of(m_held.begin(), m_held.end(), [&file](const Held &held) {
        const File locked = held.file.lock();
        return locked && *locked == file;
    });
}

Speech::File Speech::hold(const Job &job)
{
    const auto release = [speech = QPointer<Speech>(this),
                          isPrivate = job.isPrivate](const QString *path) {
        if (isPrivate) {
            QFile::remove(*path);
        }
        delete path;
        if (!speech.isNull()) {
            QTimer::singleShot(0, speech.data(), &Speech::startNext);
        }
    };
    File file(new QString(job.file), release);
    m_held.erase(std::remove_if(m_held.begin(), m_held.end(),
                                [](const Held &held) { return held.file.expired(); }),
                 m_held.end());
    m_held.push_back({file, job.user, job.priority});
    return file;
}

void Speech::startNext()
{
    if (m_job || !(m_job = takeNext())) {
        return;
    }
    const Job &job = *m_job;
    QFile kept(job.file);
    if (kept.open(QIODevice::ReadWrite)) {
        if (kept.size() > emptyBytes) {
            // The oldest ones are removed.
            kept.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
            finish(std::nullopt);
            return;
        }
        kept.remove();
    }
    m_sound.clear();
    m_process = std::make_unique<Process>();
    m_process->setProgram(job.command.first());
    m_process->setArguments(job.command.mid(1));
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
    if (std::exchange(m_isPutOff, false)) {
        m_timeout.stop();
        m_process.reset();
        m_waiting.insert(m_waiting.begin(), *std::exchange(m_job, std::nullopt));
        startNext();
        return;
    }
    const std::optional<Failure> failure = takeResult();
    m_process.reset();
    if (failure) {
        finish(failure);
        return;
    }
    removeOldest();
    m_writer.start([this, file = m_job->file, sound = std::exchange(m_sound, {})] {
        const auto written = write(file, sound);
        QMetaObject::invokeMethod(
            this, [this, written] { finish(written); }, Qt::QueuedConnection);
    });
}

std::optional<Failure> Speech::takeResult()
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
    return std::nullopt;
}

std::optional<Failure> Speech::write(const QString &path, const QByteArray &sound)
{
    const QString folder = QFileInfo(path).absolutePath();
    QDir().mkpath(folder);
    // Texts may be private.
    constexpr auto ownersOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    QFile::setPermissions(folder, ownersOnly | QFileDevice::ExeOwner);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(ownersOnly) ||
        file.write(sound) != sound.size() || !file.commit()) {
        return Failure{path + QStringLiteral(": ") + file.errorString()};
    }
    return std::nullopt;
}

void Speech::removeOldest() const
{
    const QDir folder(m_settings.folder);
    int count = 1; // that which is added
    qint64 bytes = m_sound.size();
    for (const QFileInfo &sound :
         folder.entryInfoList({QStringLiteral("*.wav")}, QDir::Files, QDir::Time)) {
        bytes += sound.size();
        const bool isTooMuch = ++count > m_settings.maxSounds || bytes > maxKeptBytes;
        if (isTooMuch && !isHeld(sound.filePath())) {
            QFile::remove(sound.filePath());
        }
    }
}

void Speech::finish(const std::optional<Failure> &failure)
{
    // The user's next one comes after those of others that wait now.
    ++m_lastTurn;
    for (Job &waiting : m_waiting) {
        if (waiting.user == m_job->user) {
            waiting.turn = m_lastTurn;
        }
    }
    const Receiver receiver = m_job->receiver;
    const Result<File> result = failure ? Result<File>(*failure) : hold(*m_job);
    m_job.reset();
    if (!m_waiting.empty()) {
        QTimer::singleShot(0, this, &Speech::startNext);
    }
    receiver(result);
}
