// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Devices of a fleet without hosts: tavo_simulated_fleet PORT FIRST COUNT [USER PASSWORD]
//
// Connects COUNT devices, numbered from FIRST, to the broker at this port of 127.0.0.1: each with a will, a subscription of its calls and of
// those of the group all, and retained states. Prints "connected" when the broker has accepted all of them,
// and "ready" when it has acknowledged all that they have published. Answers every call until it is killed.

#include "fleet/protocol/FleetAnswer.h"
#include "fleet/protocol/FleetCall.h"
#include "fleet/protocol/FleetTopics.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <vector>

namespace {
constexpr int keepAliveSeconds = 60;
constexpr int qos = 1;

struct Fleet
{
    int connected = 0;
    int acknowledged = 0;
};

struct Device
{
    QString name;
    mosquitto *handle = nullptr;
    Fleet *fleet = nullptr;

    void publish(const QString &topic, const QByteArray &payload, bool isRetained) const
    {
        mosquitto_publish_v5(handle, nullptr, qPrintable(topic), payload.size(),
                             payload.constData(), qos, isRetained, nullptr);
    }
};

void on_connect(mosquitto *handle, void *context, int code)
{
    auto &device = *static_cast<Device *>(context);
    if (code != 0) {
        std::fprintf(stderr, "refused: %d\n", code);
        std::exit(1);
    }
    ++device.fleet->connected;
    for (const QString &topic :
         {FleetTopics::call(device.name), FleetTopics::groupCall(QStringLiteral("all"))}) {
        mosquitto_subscribe(handle, nullptr, qPrintable(topic), qos);
    }
    device.publish(FleetTopics::info(device.name), R"({"groups":["all"]})", true);
    device.publish(FleetTopics::state(device.name, QStringLiteral("display")), R"({"shown":false})",
                   true);
    device.publish(FleetTopics::online(device.name), "1", true);
}

constexpr int publishedAtFirst = 3;

void on_publish(mosquitto * /*handle*/, void *context, int /*number*/)
{
    ++static_cast<Device *>(context)->fleet->acknowledged;
}

void on_message(mosquitto * /*handle*/, void *context, const mosquitto_message *message)
{
    const auto &device = *static_cast<Device *>(context);
    const auto read = FleetCall::fromJson(
        QByteArray(static_cast<const char *>(message->payload), message->payloadlen));
    if (const auto *call = std::get_if<FleetCall>(&read)) {
        FleetAnswer answer;
        answer.id = call->id;
        answer.device = device.name;
        answer.kind = FleetAnswer::Kind::Shown;
        device.publish(FleetTopics::answer(device.name, call->from), answer.toJson(), false);
    }
}

/// Connects the device. Returns its socket.
int connectTo(int port, Device &device, const char *user, const char *password)
{
    device.handle = mosquitto_new(qPrintable(device.name), true, &device);
    mosquitto_int_option(device.handle, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_int_option(device.handle, MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_connect_callback_set(device.handle, on_connect);
    mosquitto_publish_callback_set(device.handle, on_publish);
    mosquitto_message_callback_set(device.handle, on_message);
    mosquitto_username_pw_set(device.handle, user, password);
    const QByteArray online = FleetTopics::online(device.name).toUtf8();
    mosquitto_will_set(device.handle, online.constData(), 1, "0", qos, true);
    if (mosquitto_connect(device.handle, "127.0.0.1", port, keepAliveSeconds) != MOSQ_ERR_SUCCESS) {
        std::fprintf(stderr, "%s can't connect\n", qPrintable(device.name));
        std::exit(1);
    }
    return mosquitto_socket(device.handle);
}

class Loop
{
public:
    void add(Device &device, int socket)
    {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.ptr = &device;
        epoll_ctl(m_poll, EPOLL_CTL_ADD, socket, &event);
    }

    /// Reads what there is, and writes the answers to it.
    void turn(int timeoutMs)
    {
        constexpr int maxEvents = 256;
        constexpr int maxPackets = 100;
        epoll_event events[maxEvents];
        const int count = epoll_wait(m_poll, events, maxEvents, timeoutMs);
        for (int i = 0; i < count; ++i) {
            const auto *device = static_cast<Device *>(events[i].data.ptr);
            if (mosquitto_loop_read(device->handle, maxPackets) != MOSQ_ERR_SUCCESS) {
                std::fprintf(stderr, "%s has lost the broker\n", qPrintable(device->name));
                std::exit(1);
            }
            while (mosquitto_want_write(device->handle)) {
                mosquitto_loop_write(device->handle, maxPackets);
            }
        }
    }

private:
    const int m_poll = epoll_create1(EPOLL_CLOEXEC);
};

void say(const char *what, std::chrono::steady_clock::time_point since)
{
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - since;
    std::printf("%s %.3f\n", what, time.count());
    std::fflush(stdout);
}
} // namespace

int main(int argc, char **argv)
{
    constexpr int withUser = 6;
    if (argc != 4 && argc != withUser) {
        std::fprintf(stderr, "usage: tavo_simulated_fleet PORT FIRST COUNT [USER PASSWORD]\n");
        return 1;
    }
    const int port = std::atoi(argv[1]);
    const int first = std::atoi(argv[2]);
    const int count = std::atoi(argv[3]);
    const char *user = argc == withUser ? argv[4] : nullptr;
    const char *password = argc == withUser ? argv[5] : nullptr;
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    mosquitto_lib_init();

    const auto begin = std::chrono::steady_clock::now();
    Fleet fleet;
    Loop loop;
    std::vector<std::unique_ptr<Device>> devices;
    for (int i = 0; i < count; ++i) {
        devices.push_back(std::make_unique<Device>());
        devices.back()->name = QStringLiteral("device-%1").arg(first + i);
        devices.back()->fleet = &fleet;
        loop.add(*devices.back(), connectTo(port, *devices.back(), user, password));
        // More than a broker lets wait would be tried again by the kernel, a second later.
        constexpr int maxUnderWay = 50;
        while (i - fleet.connected > maxUnderWay) {
            loop.turn(-1);
        }
    }
    while (fleet.connected < count) {
        loop.turn(-1);
    }
    say("connected", begin);
    while (fleet.acknowledged < count * publishedAtFirst) {
        loop.turn(-1);
    }
    say("ready", begin);

    auto lastMisc = std::chrono::steady_clock::now();
    for (;;) {
        constexpr std::chrono::seconds miscInterval(5);
        loop.turn(1000);
        if (std::chrono::steady_clock::now() - lastMisc > miscInterval) {
            lastMisc = std::chrono::steady_clock::now();
            for (const auto &device : devices) {
                mosquitto_loop_misc(device->handle);
            }
        }
    }
}
