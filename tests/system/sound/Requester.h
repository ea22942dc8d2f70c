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

/// The test's side of the module "requester" in the host: sends it commands and receives its
/// events.
///
/// Lives in the test's thread. All waits run the event loop and have a timeout.
class Requester
{
public:
    /// An event of the worker, with its time on the monotonic clock.
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

    /// Enqueues a notification. Its responses come here.
    void enqueue(QJsonObject item);
    void cancel(const QString &id);
    void invoke(const QString &path, const QJsonObject &value = {});

    /// Waits for the last request's reply and returns its error text, empty on success.
    std::string answer();

    /// From now on notes when the main audio is "ducked" and "restored", and when the audio
    /// resource is "acquired" and "released".
    void watchServices();

    /// Waits for an event: "started ID", "finished ID", "cancelled ID", "failed ID" or one of
    /// the above.
    bool waitFor(const std::string &what);

    /// Waits until a notification has ended in any way.
    bool waitForEnd(const std::string &id);

    /// How often the event has come.
    int count(const std::string &what) const;

    /// How often a notification has ended in any way; 1 is right.
    int ends(const std::string &id) const;

    /// Waits until the main audio is not ducked and the audio resource is not held.
    bool waitForQuiet();

    /// The time of the event's last occurrence, or 0.
    double momentOf(const std::string &what) const;

    bool has(const std::string &what) const { return momentOf(what) != 0; }

    /// The responses of the notifications, in their order.
    std::vector<std::string> responses() const { return textsOf(m_responses); }

    std::size_t responseCount() const { return m_responses.size(); }

    /// The changes of the observed services, in their order.
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
    QLocalSocket *m_socket = nullptr; // owned by the server
    QByteArray m_unsent;
    int m_lastTag = 0;
    std::map<int, std::string> m_answers;
    std::vector<Event> m_responses;
    std::vector<Event> m_changes;
    bool m_ducked = false;
    bool m_acquired = false;
};
