// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "GoodClient.h"

#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <core/records/value.h>

#include <random>

namespace {
using namespace std::chrono_literals;

constexpr GoodClient::Milliseconds timeout = 10s;
constexpr GoodClient::Milliseconds nap = 20ms;
constexpr GoodClient::Milliseconds soundPause = 500ms;

/// A name that nobody guesses.
std::string secretName()
{
    std::random_device random;
    return "good-" + std::to_string(random()) + std::to_string(random());
}

TavoNotificationPlayerResponse responseOf(const BusMessage &received)
{
    BusReader reader(received);
    reader.readString();
    return TavoValue(reader.readVariant().toHash()).notificationPlayerResponse();
}
} // namespace

/// A wait that begins now and is recorded at its end.
class GoodClient::Timed
{
public:
    Timed(GoodClient &client, Kind kind)
        : m_client(client)
        , m_wait{kind, Clock::now(), {}}
    {
        const std::lock_guard lock(m_client.m_mutex);
        m_client.m_waiting[kind] = m_wait.start;
    }
    ~Timed()
    {
        m_wait.end = std::max(m_wait.start, Clock::now() - m_expected);
        const std::lock_guard lock(m_client.m_mutex);
        m_client.m_waiting.erase(m_wait.kind);
        // A wait that is cut off by the end of the measurement is not a failure.
        if (m_wait.failure.empty() || !m_client.m_stopped) {
            m_client.m_waits.push_back(m_wait);
        }
    }
    Timed(const Timed &) = delete;
    Timed &operator=(const Timed &) = delete;

    /// The request takes this long by itself; only the rest is waiting.
    void setExpected(Milliseconds expected) { m_expected = expected; }

    void fail(const std::string &failure)
    {
        if (m_wait.failure.empty()) {
            m_wait.failure = failure;
        }
    }

    /// Waits for the reply to a call. Nothing if there is none or if it is an error, which is a failure.
    std::optional<BusMessage> ask(
        Connection &connection, const BusMessage &call,
        const Connection::Handler &others = [](const BusMessage &) {})
    {
        try {
            auto reply = connection.call(call, timeout, others);
            if (!reply) {
                fail("no answer");
                return {};
            }
            if (const auto error = reply->error()) {
                fail(error->name() + ": " + error->message());
                return {};
            }
            return reply;
        } catch (const ConnectionLost &) {
            fail("disconnected");
            throw;
        }
    }

private:
    GoodClient &m_client;
    Wait m_wait;
    Milliseconds m_expected{0};
};

GoodClient::GoodClient(const Setting &setting)
    : m_setting(setting)
    , m_calls([this] { keepGoing(&GoodClient::measureCalls); })
    , m_sounds([this] { keepGoing(&GoodClient::measureSounds); })
{
}

GoodClient::~GoodClient()
{
    stop();
}

void GoodClient::stop()
{
    m_stopped = true;
    for (std::thread *thread : {&m_calls, &m_sounds}) {
        if (thread->joinable()) {
            thread->join();
        }
    }
}

std::vector<GoodClient::Wait> GoodClient::waits() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<Wait> waits = m_waits;
    for (const auto &[kind, start] : m_waiting) {
        waits.push_back({kind, start, Clock::now()});
    }
    return waits;
}

void GoodClient::keepGoing(void (GoodClient::*measure)(Connection &))
{
    while (!m_stopped) {
        try {
            Connection connection(m_setting.address, m_setting.good);
            (this->*measure)(connection);
        } catch (const ConnectionLost &) {
            std::this_thread::sleep_for(nap);
        }
    }
}

void GoodClient::measureCalls(Connection &connection)
{
    while (!m_stopped) {
        {
            Timed wait(*this, Machine);
            wait.setExpected(nap);
            std::this_thread::sleep_for(nap);
        }
        {
            Timed wait(*this, Bus);
            wait.ask(connection, connection.createCall(Connection::bus, "GetId"));
        }
        {
            Timed wait(*this, Value);
            const BusMessage call = connection.createCall(Connection::model, "GetValue");
            append(call, "s", "/notifications/player/isPlaying");
            wait.ask(connection, call);
        }
        std::optional<BusMessage> opened;
        const BusMessage notify = connection.createCall(Connection::desktop, "Notify");
        append(notify, "susssasa{sv}i", "", 0, "", "A title", "and a text", 0, 1, "urgency", "y", 2,
               0);
        {
            Timed wait(*this, Message);
            opened = wait.ask(connection, notify);
        }
        if (opened) {
            Timed wait(*this, Close);
            const BusMessage close =
                connection.createCall(Connection::desktop, "CloseNotification");
            append(close, "u", BusReader(*opened).readUInt32());
            wait.ask(connection, close);
        }
    }
}

void GoodClient::measureSounds(Connection &connection)
{
    const auto opened =
        connection.call(connection.createCall(Connection::model, "OpenInbox"), timeout);
    if (!opened || opened->error()) {
        Timed(*this, Alarm).fail("no inbox");
        return;
    }
    const std::string inbox = BusReader(*opened).readString().toStdString();
    while (!m_stopped) {
        measureSound(connection, inbox);
        std::this_thread::sleep_for(soundPause);
    }
}

void GoodClient::measureSound(Connection &connection, const std::string &inbox)
{
    const std::string id = secretName();
    auto state = TavoNotificationPlayerResponseType::Unknown;
    const auto read = [&](const BusMessage &message) {
        if (message.member() == "Received") {
            const TavoNotificationPlayerResponse response = responseOf(message);
            if (response.id().toStdString() == id) {
                state = response.type();
            }
        }
    };
    const auto waitWhile = [&](TavoNotificationPlayerResponseType::Enum before) {
        const Clock::time_point end = Clock::now() + timeout;
        while (state == before && Clock::now() < end && !m_stopped) {
            connection.read(1ms, read);
        }
    };
    {
        Timed wait(*this, Alarm);
        const BusMessage call = connection.createCall(Connection::model, "Call");
        append(call, "sv", "/notifications/player/enqueue", "a{sv}", 1, "notificationPlayerItem",
               "a{sv}", 4, "id", "s", id.c_str(), "priority", "i",
               int(TavoNotificationItemPriority::Urgent), "content", "s",
               (m_setting.sounds + Setting::alarm).c_str(), "playbackResponsePath", "s",
               inbox.c_str());
        if (!wait.ask(connection, call, read)) {
            return;
        }
        waitWhile(TavoNotificationPlayerResponseType::Unknown);
        if (state == TavoNotificationPlayerResponseType::Unknown) {
            wait.fail("not heard");
        } else if (state == TavoNotificationPlayerResponseType::Cancelled ||
                   state == TavoNotificationPlayerResponseType::Failed) {
            wait.fail(TavoNotificationPlayerResponseType::toString(state).toStdString());
        }
    }
    if (state == TavoNotificationPlayerResponseType::Unknown) {
        const BusMessage cancel = connection.createCall(Connection::model, "Call");
        append(cancel, "sv", "/notifications/player/cancel", "a{sv}", 1, "string", "s", id.c_str());
        connection.call(cancel, timeout, read);
    }
    waitWhile(TavoNotificationPlayerResponseType::Started);
}
