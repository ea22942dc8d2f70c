// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A desktop program that notifies its user with GLib's GDBus. It prints what it receives.

#include "support/glib/Glib.h"

#include <cstdint>
#include <initializer_list>
#include <limits>

namespace {
class Server : public Glib::Object
{
public:
    Server()
        : Object("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                 "org.freedesktop.Notifications")
    {
    }
};

GVariant *image(std::int32_t width, std::int32_t height, std::int32_t stride,
                std::int32_t bitsPerSample, std::int32_t channels)
{
    const std::uint8_t pixels[16] = {};
    GVariant *data =
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixels, sizeof pixels, sizeof pixels[0]);
    return g_variant_new("(iiibii@ay)", width, height, stride, TRUE, bitsPerSample, channels, data);
}

GVariant *arguments(std::uint32_t replaces, const char *body,
                    std::initializer_list<const char *> actions, GVariantDict &hints)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const char *action : actions) {
        g_variant_builder_add(&builder, "s", action);
    }
    constexpr std::int32_t stays = 0;
    return g_variant_new("(susssas@a{sv}i)", "Mail", replaces, "mail-unread", "Title", body,
                         &builder, g_variant_dict_end(&hints), stays);
}

std::uint32_t idOf(GVariant *answer)
{
    std::uint32_t id = 0;
    g_variant_get(answer, "(u)", &id);
    return id;
}

/// Opens a notification with an action, changes it when the action is invoked, and ends when it is
/// closed.
void ask(Server &server)
{
    GVariantDict hints;
    g_variant_dict_init(&hints, nullptr);
    g_variant_dict_insert(&hints, "urgency", "y", 1);
    g_variant_dict_insert(&hints, "category", "s", "im.received");
    g_variant_dict_insert(&hints, "desktop-entry", "s", "org.example.Mail");
    g_variant_dict_insert(&hints, "resident", "b", TRUE);
    g_variant_dict_insert(&hints, "sender-pid", "x", std::int64_t(1) << 40);
    g_variant_dict_insert_value(&hints, "image-data", image(2, 2, 8, 8, 4));
    const auto answer =
        server.call("Notify", arguments(0, "Coming?", {"yes", "Yes", "no", "No"}, hints));
    const std::uint32_t id = idOf(answer.get());
    Glib::print("notified " + std::to_string(id));

    const auto onReplaced = [](GObject *proxy, GAsyncResult *result, void *) {
        const Glib::Owned<GVariant> replaced(
            g_dbus_proxy_call_finish(G_DBUS_PROXY(proxy), result, nullptr));
        Glib::print("replaced " + std::to_string(idOf(replaced.get())));
    };
    server.run([&](const std::string &signal, GVariant *) {
        if (signal == "NotificationClosed") {
            server.quit();
        } else if (signal == "ActionInvoked") {
            GVariantDict none;
            g_variant_dict_init(&none, nullptr);
            g_dbus_proxy_call(server.proxy(), "Notify", arguments(id, "Answered.", {}, none),
                              G_DBUS_CALL_FLAGS_NONE, -1, nullptr, onReplaced, nullptr);
        }
    });
}

/// Sends images whose data does not match their description.
void sendFalseImages(Server &server)
{
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    for (const char *key : {"image-data", "image_data", "icon_data"}) {
        for (GVariant *lie :
             {image(most, most, most, 8, 4), image(least, least, least, 8, 4), image(0, 0, 0, 0, 0),
              image(2, 2, 1, 8, 4), image(1 << 16, 1 << 16, 4, 8, 4), image(2, 2, 8, 64, most)}) {
            GVariantDict hints;
            g_variant_dict_init(&hints, nullptr);
            g_variant_dict_insert_value(&hints, key, lie);
            const auto answer = server.call("Notify", arguments(1, "Picture", {}, hints));
            Glib::print(Glib::textOf(answer.get()));
        }
    }
}
} // namespace

int main(int argc, char **argv)
{
    const std::string task = argc > 1 ? argv[1] : "";
    Server server;
    if (task == "ask") {
        ask(server);
    } else if (task == "false-images") {
        sendFalseImages(server);
    } else if (task == "close") {
        server.call("CloseNotification", g_variant_new("(u)", 17U));
    } else {
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
