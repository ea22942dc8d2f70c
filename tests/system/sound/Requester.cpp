// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Requester.h"

#include "support/EventLoop.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>

#include <array>
#include <stdexcept>

namespace {

constexpr std::chrono::seconds replyTimeout{30};

constexpr int audioResource = 2;

const QString mainAudioState = QStringLiteral("/player/mainAudio/state");
const QString powerManagerState = QStringLiteral("/powerManager/state");

std::string responseName(int type)
{
    constexpr std::array<const char *, 5> names{"unknown", "started", "finished", "cancelled",
                                                "failed"};
    return names.at(std::size_t(type));
}

bool isAudioHeld(const QJsonObject &state)
{
    for (const QJsonValue held : state[QStringLiteral("resources")].toArray()) {
        if (held[QStringLiteral("resource")].toInt() == audioResource) {
            return true;
        }
    }
    return false;
}

} // namespace

Requester::Requester(const QString &name, const QString &folder)
    : m_name(name)
{
    if (!m_server.listen(folder + QLatin1Char('/') + name + QStringLiteral(".socket"))) {
        throw std::runtime_error("no socket for a requester");
    }
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { accept(); });
}

Requester::~Requester() = default;

QJsonObject Requester::module() const
{
    const QJsonObject config{{QStringLiteral("socket"), m_server.fullServerName()}};
    return {{QStringLiteral("name"), m_name},
            {QStringLiteral("library"), QStringLiteral("requester")},
            {QStringLiteral("config"), config}};
}

void Requester::enqueue(QJsonObject item)
{
    item.insert(QStringLiteral("playbackResponsePath"),
                QStringLiteral("/requester/%1/response").arg(m_name));
    invoke(QStringLiteral("/notifications/player/enqueue"),
           {{QStringLiteral("notificationPlayerItem"), item}});
}

void Requester::cancel(const QString &id)
{
    invoke(QStringLiteral("/notifications/player/cancel"), {{QStringLiteral("string"), id}});
}

void Requester::invoke(const QString &path, const QJsonObject &value)
{
    send({{QStringLiteral("do"), QStringLiteral("invoke")},
          {QStringLiteral("path"), path},
          {QStringLiteral("value"), value},
          {QStringLiteral("tag"), ++m_lastTag}});
}

std::string Requester::answer()
{
    const bool answered =
        ::waitFor([this] { return m_answers.count(m_lastTag) > 0; }, replyTimeout);
    return answered ? m_answers.at(m_lastTag) : "no answer";
}

void Requester::watchServices()
{
    for (const QString &path : {mainAudioState, powerManagerState}) {
        send({{QStringLiteral("do"), QStringLiteral("watch")}, {QStringLiteral("path"), path}});
    }
}

bool Requester::waitFor(const std::string &what)
{
    return ::waitFor([&] { return has(what); }, replyTimeout);
}

bool Requester::waitForEnd(const std::string &id)
{
    return ::waitFor([&] { return ends(id) > 0; }, replyTimeout);
}

int Requester::count(const std::string &what) const
{
    int count = 0;
    for (const auto *events : {&m_responses, &m_changes}) {
        for (const Event &event : *events) {
            count += event.what == what ? 1 : 0;
        }
    }
    return count;
}

int Requester::ends(const std::string &id) const
{
    return count("finished " + id) + count("cancelled " + id) + count("failed " + id);
}

bool Requester::waitForQuiet()
{
    return ::waitFor([this] { return !m_ducked && !m_acquired; }, replyTimeout);
}

double Requester::momentOf(const std::string &what) const
{
    double moment = 0;
    for (const auto *events : {&m_responses, &m_changes}) {
        for (const Event &event : *events) {
            moment = event.what == what ? event.moment : moment;
        }
    }
    return moment;
}

std::vector<std::string> Requester::textsOf(const std::vector<Event> &events)
{
    std::vector<std::string> texts;
    texts.reserve(events.size());
    for (const Event &event : events) {
        texts.push_back(event.what);
    }
    return texts;
}

void Requester::accept()
{
    m_socket = m_server.nextPendingConnection();
    QObject::connect(m_socket, &QLocalSocket::readyRead, m_socket, [this] { read(); });
    m_socket->write(m_unsent);
}

void Requester::send(const QJsonObject &line)
{
    const QByteArray text = QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
    if (m_socket == nullptr) {
        m_unsent += text;
        return;
    }
    m_socket->write(text);
    m_socket->flush();
}

void Requester::read()
{
    while (m_socket->canReadLine()) {
        take(QJsonDocument::fromJson(m_socket->readLine()).object());
    }
}

void Requester::take(const QJsonObject &line)
{
    const QString event = line[QStringLiteral("event")].toString();
    if (event == QLatin1String("answer")) {
        m_answers[line[QStringLiteral("tag")].toInt()] =
            line[QStringLiteral("error")].toString().toStdString();
    } else if (event == QLatin1String("response")) {
        m_responses.push_back({line[QStringLiteral("t")].toDouble(),
                               responseName(line[QStringLiteral("type")].toInt()) + ' ' +
                                   line[QStringLiteral("id")].toString().toStdString()});
    } else if (event == QLatin1String("value")) {
        takeValue(line);
    }
}

void Requester::takeValue(const QJsonObject &line)
{
    const QJsonValue value = line[QStringLiteral("value")];
    if (line[QStringLiteral("path")] == mainAudioState) {
        const bool ducked =
            value[QStringLiteral("mainAudioState")][QStringLiteral("ducked")].toBool();
        note(line, ducked, m_ducked, "ducked", "restored");
    } else {
        note(line, isAudioHeld(value[QStringLiteral("powerManagerState")].toObject()), m_acquired,
             "acquired", "released");
    }
}

void Requester::note(const QJsonObject &line, bool now, bool &before, const char *on,
                     const char *off)
{
    if (now != before) {
        m_changes.push_back({line[QStringLiteral("t")].toDouble(), now ? on : off});
    }
    before = now;
}
