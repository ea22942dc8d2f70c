// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Round trips through a broker, by libmosquitto alone: tavo_round_trips PORT (echo | DEVICE) COUNT WINDOW
//
// Sends calls that show a message until it is cancelled, WINDOW of them at a time, and waits for the answers: of the
// device, or of an echo in this program. Prints the median of the times in microseconds, how many were answered in a
// second, and how many answers were errors. Then cancels the messages.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <string>
#include <vector>

namespace {
using Clock = std::chrono::steady_clock;

constexpr int keepAlive = 60;

struct Trips
{
    std::map<std::string, Clock::time_point> sent;
    std::vector<double> times;
    int errors = 0;
};

mosquitto *connectTo(int port, void *context)
{
    mosquitto *client = mosquitto_new(nullptr, true, context);
    mosquitto_int_option(client, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_int_option(client, MOSQ_OPT_TCP_NODELAY, 1);
    if (mosquitto_connect(client, "127.0.0.1", port, keepAlive) != MOSQ_ERR_SUCCESS) {
        std::fprintf(stderr, "no broker at port %d\n", port);
        std::exit(1);
    }
    return client;
}

std::string idIn(const std::string &json)
{
    const auto begin = json.find("\"id\":\"") + 6;
    return json.substr(begin, json.find('"', begin) - begin);
}

void takeAnswer(mosquitto * /*client*/, void *context, const mosquitto_message *message)
{
    auto &trips = *static_cast<Trips *>(context);
    const std::string json(static_cast<const char *>(message->payload),
                           std::size_t(message->payloadlen));
    const auto found = trips.sent.find(idIn(json));
    if (found == trips.sent.end()) {
        return;
    }
    const std::chrono::duration<double, std::micro> time = Clock::now() - found->second;
    trips.times.push_back(time.count());
    trips.sent.erase(found);
    if (json.find("\"error\"") != std::string::npos && trips.errors++ == 0) {
        std::fprintf(stderr, "%s\n", json.c_str());
    }
}

void echo(mosquitto *client, void * /*context*/, const mosquitto_message *message)
{
    mosquitto_publish(client, nullptr, "tavo/v1/echo/answer/bench", message->payloadlen,
                      message->payload, 1, false);
}

struct Peer
{
    mosquitto *client;
    std::string topic; ///< of calls
    Trips trips;

    void send(const std::string &id, const std::string &fields)
    {
        const std::string call = R"({"id":")" + id + R"(","from":"bench",)" + fields + "}";
        trips.sent.emplace(id, Clock::now());
        mosquitto_publish(client, nullptr, topic.c_str(), int(call.size()), call.data(), 1, false);
    }

    void wait()
    {
        if (mosquitto_loop(client, 1000, 1) != MOSQ_ERR_SUCCESS) {
            std::fprintf(stderr, "the connection was lost\n");
            std::exit(1);
        }
    }
};

/// Sends the calls of the numbers below count, and waits for all answers.
template <typename Send>
void exchange(Peer &peer, std::size_t count, std::size_t window, const Send &send)
{
    for (std::size_t next = 0; next < count || !peer.trips.sent.empty();) {
        while (next < count && peer.trips.sent.size() < window) {
            send(next++);
        }
        peer.wait();
    }
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fprintf(stderr, "Usage: tavo_round_trips PORT (echo | DEVICE) COUNT WINDOW\n");
        return 64;
    }
    const int port = std::atoi(argv[1]);
    const std::string device = argv[2];
    const std::size_t count = std::size_t(std::atoi(argv[3]));
    const std::size_t window = std::size_t(std::atoi(argv[4]));
    const std::string topic = "tavo/v1/" + device;
    mosquitto_lib_init();
    mosquitto *echoing = nullptr;
    if (device == "echo") {
        echoing = connectTo(port, nullptr);
        mosquitto_message_callback_set(echoing, echo);
        mosquitto_subscribe(echoing, nullptr, "tavo/v1/echo/call", 1);
        mosquitto_loop_start(echoing);
    }
    Peer peer{nullptr, topic + "/call", {}};
    peer.client = connectTo(port, &peer.trips);
    mosquitto_message_callback_set(peer.client, takeAnswer);
    mosquitto_subscribe(peer.client, nullptr, (topic + "/answer/bench").c_str(), 1);
    for (int i = 0; i < 20; ++i) { // subscribes
        mosquitto_loop(peer.client, 10, 1);
    }
    const auto run = std::to_string(Clock::now().time_since_epoch().count()) + "-";
    const auto start = Clock::now();
    exchange(peer, count, window, [&](std::size_t i) {
        peer.send(run + std::to_string(i), R"("call":"show","title":"Water","timeout":0)");
    });
    const std::chrono::duration<double> all = Clock::now() - start;
    auto &times = peer.trips.times;
    std::sort(times.begin(), times.end());
    std::printf("%s median %.0f us, %.0f a second, errors %d\n", device.c_str(), times[count / 2],
                double(count) / all.count(), peer.trips.errors);
    std::fflush(stdout);
    if (echoing == nullptr) {
        constexpr std::size_t cancelWindow = 50;
        exchange(peer, count, cancelWindow, [&](std::size_t i) {
            const auto number = std::to_string(i);
            peer.send("c" + run + number, R"("call":"cancel","target":")" + run + number + "\"");
        });
    } else {
        mosquitto_disconnect(echoing);
        mosquitto_loop_stop(echoing, false);
    }
    return 0;
}
