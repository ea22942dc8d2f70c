// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A client of a notification server. It reads a command from each line of its input and writes how
// long the command took.
//
//   open COUNT MS      opens notifications, with many calls in flight; stops early after MS
//   roundtrip COUNT    opens notifications, one call after the other
//   closeOne COUNT     closes random notifications, one call after the other
//   closeAll           closes all open notifications, in the order in which they were opened
//   bodies COUNT BYTES opens and closes notifications with bodies of that size, one by one
//   ping               calls Ping until the next line, which may be empty
//   await              writes when the server's name gets an owner

#include "ClientBus.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <map>
#include <poll.h>
#include <random>
#include <sstream>
#include <unistd.h>

namespace {
using Clock = std::chrono::steady_clock;
using Milliseconds = ClientBus::Milliseconds;

template <typename Function>
double secondsOf(const Function &function)
{
    const auto start = Clock::now();
    function();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void answer(const char *what, double seconds)
{
    std::printf("{\"%s\": %.9f}\n", what, seconds);
    std::fflush(stdout);
}

void answerEach(std::vector<double> seconds)
{
    std::sort(seconds.begin(), seconds.end());
    std::printf("{\"median\": %.9f, \"max\": %.9f}\n", seconds[seconds.size() / 2], seconds.back());
    std::fflush(stdout);
}

/// A text of that length, with the markup and the entities that bodies may have.
std::string bodyOf(std::size_t size)
{
    std::string body;
    while (body.size() < size) {
        body += "Some <b>words</b> &amp; more of <i>them</i>, ";
    }
    body.resize(size);
    return body;
}

class Client
{
public:
    void run()
    {
        for (std::string line; std::getline(std::cin, line);) {
            std::istringstream words(line);
            std::string command;
            if (words >> command) {
                (this->*commands().at(command))(words);
            }
        }
    }

private:
    using Command = void (Client::*)(std::istream &arguments);

    static const std::map<std::string, Command> &commands()
    {
        static const std::map<std::string, Command> all{
            {"open", &Client::open},         {"roundtrip", &Client::roundTrip},
            {"closeOne", &Client::closeOne}, {"closeAll", &Client::closeAll},
            {"bodies", &Client::bodies},     {"ping", &Client::ping},
            {"await", &Client::await}};
        return all;
    }

    template <typename Function>
    static std::vector<double> repeated(std::istream &arguments, const Function &function)
    {
        std::size_t count = 0;
        arguments >> count;
        std::vector<double> seconds(count);
        std::generate(seconds.begin(), seconds.end(), [&] { return secondsOf(function); });
        return seconds;
    }

    void open(std::istream &arguments)
    {
        std::size_t count = 0;
        double timeout = 0;
        arguments >> count >> timeout;
        const std::size_t before = m_ids.size();
        const double seconds =
            secondsOf([&] { m_bus.notifyMany(count, Milliseconds(timeout), m_ids); });
        const std::size_t opened = m_ids.size() - before;
        std::printf("{\"opened\": %zu, \"each\": %.9f}\n", opened, seconds / double(opened));
        std::fflush(stdout);
    }

    void roundTrip(std::istream &arguments)
    {
        answerEach(repeated(arguments, [this] { m_ids.push_back(m_bus.notify("A body")); }));
    }

    void closeOne(std::istream &arguments)
    {
        answerEach(repeated(arguments, [this] {
            std::swap(m_ids.at(m_random() % m_ids.size()), m_ids.back());
            m_bus.close(m_ids.back());
            m_ids.pop_back();
        }));
    }

    void closeAll(std::istream & /*arguments*/)
    {
        std::sort(m_ids.begin(), m_ids.end());
        const double seconds = secondsOf([this] { m_bus.closeMany(m_ids); });
        answer("each", seconds / double(m_ids.size()));
        m_ids.clear();
    }

    void bodies(std::istream &arguments)
    {
        std::size_t count = 0;
        std::size_t size = 0;
        arguments >> count >> size;
        const std::string body = bodyOf(size);
        std::istringstream number(std::to_string(count));
        answerEach(repeated(number, [&] { m_bus.close(m_bus.notify(body)); }));
    }

    void ping(std::istream & /*arguments*/)
    {
        std::vector<double> seconds;
        pollfd next{STDIN_FILENO, POLLIN, 0};
        do {
            seconds.push_back(secondsOf([this] { m_bus.ping(); }));
        } while (poll(&next, 1, 0) == 0);
        answerEach(seconds);
    }

    void await(std::istream & /*arguments*/)
    {
        double owned = 0;
        const auto onOwned = [](sd_bus_message *message, void *data, sd_bus_error *) {
            timespec now = {};
            clock_gettime(CLOCK_MONOTONIC, &now);
            const char *owner = nullptr;
            checked(sd_bus_message_read(message, "sss", nullptr, nullptr, &owner));
            *static_cast<double *>(data) =
                *owner != '\0' ? double(now.tv_sec) + 1e-9 * double(now.tv_nsec) : 0;
            return 0;
        };
        sd_bus_slot *slot = nullptr;
        checked(sd_bus_add_match(m_bus.bus(), &slot,
                                 "type='signal',sender='org.freedesktop.DBus',"
                                 "member='NameOwnerChanged',arg0='org.freedesktop.Notifications'",
                                 onOwned, &owned));
        std::puts("{}");
        std::fflush(stdout);
        while (owned == 0) {
            if (checked(sd_bus_process(m_bus.bus(), nullptr)) == 0) {
                checked(sd_bus_wait(m_bus.bus(), UINT64_MAX));
            }
        }
        sd_bus_slot_unref(slot);
        answer("owned", owned);
    }

    ClientBus m_bus;
    std::vector<std::uint32_t> m_ids; ///< of open notifications
    std::mt19937 m_random;            ///< the same numbers in every run
};
} // namespace

int main()
{
    Client().run();
    return 0;
}
