// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gio/gio.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace Glib {
struct Delete
{
    void operator()(GVariant *variant) const { g_variant_unref(variant); }
    void operator()(GError *error) const { g_error_free(error); }
    void operator()(GMainLoop *loop) const { g_main_loop_unref(loop); }
    void operator()(GDBusProxy *proxy) const { g_object_unref(proxy); }
    void operator()(char *text) const { g_free(text); }
};
template <typename T>
using Owned = std::unique_ptr<T, Delete>;

/// Prints at once, since a test may be waiting for it.
inline void print(const std::string &line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

/// The value as text, with its types.
inline std::string textOf(GVariant *variant)
{
    const Owned<char> text(g_variant_print(variant, TRUE));
    return text.get();
}

/// The name of the error and its message, without GLib's prefix.
inline std::string textOf(GError *error)
{
    const Owned<char> name(g_dbus_error_get_remote_error(error));
    g_dbus_error_strip_remote_error(error);
    return std::string(name ? name.get() : "no remote error") + ": " + error->message;
}

/// An object on the session bus as a GLib program sees it, with a main loop for its signals.
class Object
{
public:
    Object(const char *service, const char *path, const char *interface)
        : m_loop(g_main_loop_new(nullptr, FALSE))
    {
        GError *error = nullptr;
        m_proxy.reset(g_dbus_proxy_new_for_bus_sync(G_BUS_TYPE_SESSION, G_DBUS_PROXY_FLAGS_NONE,
                                                    nullptr, service, path, interface, nullptr,
                                                    &error));
        if (!m_proxy) {
            print(textOf(error));
            std::exit(EXIT_FAILURE);
        }
        g_signal_connect(m_proxy.get(), "g-signal", G_CALLBACK(&Object::on_proxy_signal), this);
    }

    GDBusProxy *proxy() { return m_proxy.get(); }

    /// Calls and waits. Returns null on error, which is printed.
    Owned<GVariant> call(const char *method, GVariant *arguments)
    {
        GError *error = nullptr;
        Owned<GVariant> answer(g_dbus_proxy_call_sync(m_proxy.get(), method, arguments,
                                                      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error));
        if (!answer) {
            const Owned<GError> owned(error);
            print(textOf(error));
        }
        return answer;
    }

    /// Prints each signal and passes it on, until quit().
    void run(std::function<void(const std::string &name, GVariant *arguments)> hear)
    {
        m_hear = std::move(hear);
        g_main_loop_run(m_loop.get());
    }
    void quit() { g_main_loop_quit(m_loop.get()); }

private:
    static void on_proxy_signal(GDBusProxy *, const char *, const char *name, GVariant *arguments,
                                Object *self)
    {
        print(std::string(name) + ' ' + textOf(arguments));
        if (self->m_hear) {
            self->m_hear(name, arguments);
        }
    }

    Owned<GMainLoop> m_loop;
    Owned<GDBusProxy> m_proxy;
    std::function<void(const std::string &name, GVariant *arguments)> m_hear;
};
} // namespace Glib
