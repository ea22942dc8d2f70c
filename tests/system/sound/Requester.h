// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QLocalServer>
#include <QString>

#include <map>
#include <memory>
#include <string>
#include <vector>

class QLocalSocket;

/// The test's end of a "requester" module in the host, which see: what the test has it do in the
/// model, and what it saw there.
///
/// Thread: the test's. Everything that waits turns the event loop and gives up after a while.
class Requester
{
public:
    /// What happened to the worker, when, on the monotonic clock.
    struct Event
    {
        double moment;
        std::string what;
    };

    /// The folder is for the socket.
    Requester(const QString &name, const QString &folder);
    ~Requester();
    Requester(const Requester &) = delete;
    Requester &operator=(const Requester &) = delete;

    /// The module's entry in the host's configuration.
    QJsonObject module() const;

    /// Queues a notification, whose responses come here.
    void enqueue(QJsonObject item);
    void cancel(const QString &id);
    void invoke(const QString &path, const QJsonObject &value = {});

    /// Waits for the answer to the last request; gives its error's text, empty for a good one.
    std::string answer();

    /// Notes from now on when the main audio is "ducked" and "restored", and when the audio
    /// resource is "acquired" and "released".
    void watchServices();

    /// Waits until something has happened: "started ID", "finished ID", "cancelled ID", "failed ID"
    /// or one of the above.
    bool waitFor(const std::string &what);

    /// Waits until one has ended, however.
    bool waitForEnd(const std::string &id);

    /// How often it has happened.
    int count(const std::string &what) const;

    /// How often one has ended, however; once is right.
    int ends(const std::string &id) const;

    /// Waits until the main audio isn't ducked and the audio resource isn't held.
    bool waitForQuiet();

    /// When it happened last; 0 when it didn't.
    double momentOf(const std::string &what) const;

    bool has(const std::string &what) const { return momentOf(what) != 0; }

    /// What became of the notifications, in the order in which it did.
    std::vector<std::string> responses() const { return textsOf(m_responses); }

    std::size_t responseCount() const { return m_responses.size(); }

    /// What became of the services that are watched.
    std::vector<std::string> changes() const { return textsOf(m_changes); }

private:
    void accept();
    void read();
    void take(const QJsonObject &line);
    void takeValue(const QJsonObject &line);
    void note(const QJsonObject &line, bool now, bool &before, const char *on, const char *off);
    void send(const QJsonObject &line);
    static std::vector<std::string> textsOf(const std::vector<Event> &events);

    const QString m_name;
    QLocalServer m_server;
    QLocalSocket *m_socket = nullptr; // the server's
    QByteArray m_unsent;
    int m_lastTag = 0;
    std::map<int, std::string> m_answers;
    std::vector<Event> m_responses;
    std::vector<Event> m_changes;
    bool m_ducked = false;
    bool m_acquired = false;
};
