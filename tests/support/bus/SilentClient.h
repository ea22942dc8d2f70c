// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <systemd/sd-bus.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

/// A client that sends calls and reads nothing until it is told to.
class SilentClient
{
public:
    explicit SilentClient(const QString &address)
    {
        check(sd_bus_new(&m_bus));
        check(sd_bus_set_address(m_bus, address.toLatin1().constData()));
        check(sd_bus_set_bus_client(m_bus, 1));
        check(sd_bus_start(m_bus));
        const char *name = nullptr;
        check(sd_bus_get_unique_name(m_bus, &name));
        m_name = name;
    }
    ~SilentClient() { sd_bus_close_unref(m_bus); }
    SilentClient(const SilentClient &) = delete;
    SilentClient &operator=(const SilentClient &) = delete;

    const std::string &name() const { return m_name; }

    void getValue(const char *path)
    {
        send("org.tavo.Model1", "GetValue",
             [path](sd_bus_message *call) { check(sd_bus_message_append(call, "s", path)); });
    }
    /// Opens a desktop notification that stays.
    void notify()
    {
        sd_bus_message *call = nullptr;
        constexpr const char *name = "org.freedesktop.Notifications";
        check(sd_bus_message_new_method_call(m_bus, &call, name, "/org/freedesktop/Notifications",
                                             name, "Notify"));
        check(sd_bus_message_append(call, "susssasa{sv}i", "", 0U, "", "Title", "", 0, 0, 0));
        send(call);
    }
    void introspect()
    {
        send("org.freedesktop.DBus.Introspectable", "Introspect", [](sd_bus_message *) {});
    }

    void sendSignal(const std::string &receiver)
    {
        sd_bus_message *signal = nullptr;
        check(sd_bus_message_new_signal(m_bus, &signal, "/", "org.tavo.Test", "Test"));
        check(sd_bus_send_to(m_bus, signal, receiver.c_str(), &m_cookie));
        sd_bus_message_unref(signal);
        check(sd_bus_flush(m_bus));
    }

    /// Sends a number to a node.
    void call(const char *path)
    {
        send("org.tavo.Model1", "Call", [path](sd_bus_message *call) {
            check(sd_bus_message_append(call, "sv", path, "i", 1));
        });
    }

    /// Reads this many replies. Returns the number of each error; "" stands for no error.
    std::map<std::string, int> read(int count)
    {
        std::map<std::string, int> errors;
        readReplies(count, [&](sd_bus_message *reply) {
            const sd_bus_error *error = sd_bus_message_get_error(reply);
            ++errors[error == nullptr ? "" : error->name];
        });
        return errors;
    }
    /// The same, with the message of each error.
    std::vector<std::string> readTexts(int count)
    {
        std::vector<std::string> texts;
        readReplies(count, [&](sd_bus_message *reply) {
            const sd_bus_error *error = sd_bus_message_get_error(reply);
            texts.emplace_back(error == nullptr ? "" : error->message);
        });
        return texts;
    }
    /// The same, with the serial number that the sender gave each reply when it sent it.
    std::vector<std::uint64_t> readSerials(int count)
    {
        std::vector<std::uint64_t> serials;
        readReplies(count, [&](sd_bus_message *reply) {
            check(sd_bus_message_get_cookie(reply, &serials.emplace_back()));
        });
        return serials;
    }

protected:
    static constexpr std::uint64_t timeoutMicroseconds = 20'000'000;

    static int check(int result)
    {
        if (result < 0) {
            throw std::runtime_error("a silent client fails: " + std::to_string(result));
        }
        return result;
    }

    sd_bus *m_bus = nullptr;

private:
    template <typename Take>
    void readReplies(int count, Take take)
    {
        while (count > 0) {
            sd_bus_message *message = nullptr;
            check(sd_bus_process(m_bus, &message));
            if (message == nullptr) {
                if (sd_bus_wait(m_bus, timeoutMicroseconds) <= 0) {
                    throw std::runtime_error("a silent client gets no reply");
                }
                continue;
            }
            if (sd_bus_message_get_reply_cookie(message, &m_cookie) >= 0) {
                take(message);
                --count;
            }
            sd_bus_message_unref(message);
        }
    }

    template <typename Append>
    void send(const char *interface, const char *method, Append append)
    {
        sd_bus_message *call = nullptr;
        check(sd_bus_message_new_method_call(m_bus, &call, "org.tavo.Model1", "/org/tavo/Model1",
                                             interface, method));
        append(call);
        send(call);
    }

    void send(sd_bus_message *call)
    {
        check(sd_bus_send(m_bus, call, &m_cookie));
        sd_bus_message_unref(call);
        check(sd_bus_flush(m_bus));
    }

    std::string m_name;
    std::uint64_t m_cookie = 0;
};
