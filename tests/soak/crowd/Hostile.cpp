// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Hostile.h"

#include "Attacks.h"
#include <bus/BusError.h>

#include <cstring>
#include <thread>
#include <utility>

namespace {
using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr int minAttackMs = 300;
constexpr int maxAttackMs = 4000;

/// How much longer a connection may take before it is cut.
constexpr milliseconds grace = 1s;
constexpr milliseconds readPause = 20ms;
} // namespace

Hostile::Hostile(const Setting &setting, int number, std::uint64_t seed)
    : m_setting(setting)
    , m_number(number)
    , m_dice(seed)
{
}

void Hostile::attack(const Attack &attack)
{
    m_end = Clock::now() + milliseconds(m_dice.number(minAttackMs, maxAttackMs));
    m_run = {&attack, Clock::now(), {}};
    try {
        chooseUser(attack);
        connectAgain();
        attack.run(*this);
    } catch (const ConnectionLost &) {
        // The bus disconnects clients that break its rules.
        std::this_thread::sleep_for(readPause);
    }
    const std::lock_guard lock(m_mutex);
    m_overdue.reset();
    m_connections.clear();
    m_run.end = Clock::now();
    m_runs.push_back(m_run);
}

void Hostile::chooseUser(const Attack &attack)
{
    m_isOutsider = attack.who == Attack::Who::Outsider;
    m_user = m_setting.outsider;
    if (!m_isOutsider) {
        m_user.reset();
        if (!m_setting.hostile.empty()) {
            m_user = m_setting.hostile[std::size_t(m_number) % m_setting.hostile.size()];
        }
    }
}

Connection &Hostile::connectAgain()
{
    auto connection = std::make_unique<Connection>(m_setting.address, m_user);
    const std::lock_guard lock(m_mutex);
    m_connections.push_back(std::move(connection));
    m_overdue = m_end + grace;
    return *m_connections.back();
}

void Hostile::cutOverdue()
{
    const std::lock_guard lock(m_mutex);
    if (m_overdue && (m_stopped || Clock::now() > *m_overdue)) {
        for (const auto &connection : m_connections) {
            connection->cut();
        }
        m_overdue.reset();
    }
}

std::vector<Run> Hostile::runs() const
{
    const std::lock_guard lock(m_mutex);
    return m_runs;
}

std::vector<std::string> Hostile::findings() const
{
    const std::lock_guard lock(m_mutex);
    return m_findings;
}

std::string Hostile::newName()
{
    return "hostile-" + std::to_string(m_number) + '-' + std::to_string(++m_lastName);
}

void Hostile::send(const BusMessage &call, bool wantsReply)
{
    send(connection(), call, wantsReply);
}

void Hostile::send(Connection &connection, const BusMessage &call, bool wantsReply)
{
    connection.send(call, wantsReply);
    ++m_run.sent;
}

void Hostile::readReplies(long count)
{
    const long enough = m_run.answered + count;
    while (goesOn() && m_run.answered < enough) {
        connection().read(readPause, [this](const BusMessage &message) { this->count(message); });
    }
}

void Hostile::read()
{
    connection().read(0ms, [this](const BusMessage &message) { this->count(message); });
}

void Hostile::readNothing() const
{
    while (goesOn()) {
        std::this_thread::sleep_for(readPause);
    }
}

std::optional<BusMessage> Hostile::ask(const BusMessage &call)
{
    ++m_run.sent;
    const auto left = std::chrono::duration_cast<milliseconds>(m_end - Clock::now());
    const auto reply =
        connection().call(call, left, [this](const BusMessage &message) { this->count(message); });
    if (!reply) {
        return {};
    }
    count(*reply);
    return reply->error() ? std::nullopt : reply;
}

void Hostile::count(const BusMessage &message)
{
    const char *sender = sd_bus_message_get_sender(message.get());
    const bool isOwn = sender == nullptr || std::strcmp(sender, "org.freedesktop.DBus.Local") == 0;
    if (m_isOutsider && !isOwn && !message.isFromBus()) {
        find("a message of the host has reached an outsider: " + message.member());
    }
    std::uint64_t cookie = 0;
    if (sd_bus_message_get_reply_cookie(message.get(), &cookie) >= 0) {
        ++m_run.answered;
        m_run.refused += message.error() ? 1 : 0;
    }
}

void Hostile::find(const std::string &finding)
{
    const std::lock_guard lock(m_mutex);
    m_findings.push_back(finding);
}
