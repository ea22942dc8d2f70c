// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include <core/tavo.h>

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QThreadPool>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Makes sounds of texts, with a program that reads a text from its input and writes a WAV file to its
/// output. What has been said is kept for the next time.
///
/// Owned by the worker, used in its thread. Nothing waits for the program, of which at most one runs.
class Speech : public QObject
{
    Q_OBJECT

public:
    struct Settings
    {
        QStringList
            command; ///< the program and its arguments, started without a shell; empty: no speech
        QString folder; ///< where sounds are kept
        int timeoutMs = 10000;
        int maxSounds = 100; ///< that are kept, of 64 MiB at most in all
    };

    /// The path of a sound file, which is kept as long as somebody holds this.
    using File = std::shared_ptr<const QString>;
    using Receiver = std::function<void(const Result<File> &)>;

    explicit Speech(const Settings &settings, QObject *parent = nullptr);

    /// Ends the program; the receivers that wait are not called.
    ~Speech() override;

    /// Other programs, for texts from now on. If the command is empty, it is that of the settings. Texts in
    /// one of the languages have a command of their own.
    void setCommands(const QStringList &command, const QMap<QString, QStringList> &byLanguage);

    /// Why the text can't be spoken, such as "there is no program espeak-ng"; empty if nothing is known
    /// against it. The language is that which the sender names; may be empty. See speechLanguage().
    QString obstacle(const QString &text, const QString &language) const;

    struct Request
    {
        QString text;     ///< of which at most 1,000 characters are spoken
        QString language; ///< as for obstacle()
        QString user;     ///< may be empty
        TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
        bool isPrivate = false; ///< has a file of its own, removed when nobody holds it any more
    };

    /// Calls the receiver once, from the event loop. The most urgent texts come first, and of these one of each
    /// user in turn. At most 16 of a user wait; then the least urgent of them fails. While 32 files
    /// of the user are held that are no less urgent, a text goes on waiting.
    void say(const Request &request, const Receiver &receiver);

    /// $CACHE_DIRECTORY/speech for a service of the system, else tavo/speech in the user's cache.
    static QString defaultFolder();

private Q_SLOTS:
    void on_process_readyRead();
    void on_process_ended();
    void on_timeout_timeout();

private:
    class Process;

    struct Job
    {
        QStringList command;
        QString text;
        QString file;
        QString user;
        TavoNotificationItemPriority::Enum priority;
        bool isPrivate;
        Receiver receiver;
        std::uint64_t turn; ///< of equal priority, the lowest is next
    };

    /// Empty if none is configured for the text.
    QStringList commandFor(const QString &text, const QString &language) const;
    bool makeRoom(const QString &user, TavoNotificationItemPriority::Enum priority);
    std::optional<Job> takeNext();
    File hold(const Job &job);
    bool isHeld(const QString &file) const;
    bool holdsTooMany(const QString &user, TavoNotificationItemPriority::Enum priority) const;
    void refuse(const Receiver &receiver, const char *reason);
    void startNext();
    void finish(const std::optional<Failure> &failure);
    std::optional<Failure> takeResult();
    static std::optional<Failure> write(const QString &path, const QByteArray &sound);
    QString fileFor(const QStringList &command, const QString &text) const;
    QString ownFile() const;
    void removeOldest() const;

    struct Held
    {
        std::weak_ptr<const QString> file;
        QString user;
        TavoNotificationItemPriority::Enum priority;
    };

    const Settings m_settings;
    QStringList m_command;
    QMap<QString, QStringList> m_languages; ///< commands, by language
    std::vector<Job> m_waiting;             ///< in the order in which they came
    std::vector<Held> m_held;
    std::optional<Job> m_job; ///< the one that the program works for
    bool m_isPutOff = false;  ///< for a more urgent one
    std::uint64_t m_lastTurn = 0;
    std::unique_ptr<Process> m_process;
    QByteArray m_sound; ///< what the program has written
    QTimer m_timeout;
    QThreadPool m_writer; ///< of what has been said: a disk may be busy for seconds
};
