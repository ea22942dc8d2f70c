// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A client of org.tavo.Model1 with GLib's GDBus. It prints what it receives.

#include "support/glib/Glib.h"

#include <cstdint>
#include <initializer_list>
#include <limits>

namespace {
class Model : public Glib::Object
{
public:
    Model()
        : Object("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1")
    {
    }

    void print(const char *method, GVariant *arguments)
    {
        if (const auto answer = call(method, arguments)) {
            Glib::print(Glib::textOf(answer.get()));
        }
    }
    void send(const char *path, GVariant *value)
    {
        print("Call", g_variant_new("(sv)", path, value));
    }
};

GVariant *bytes()
{
    const std::uint8_t data[] = {0, 1, 127, 128, 255};
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, data, sizeof data, sizeof data[0]);
}

GVariant *recordOf(const char *field, GVariant *value)
{
    GVariantDict record;
    g_variant_dict_init(&record, nullptr);
    g_variant_dict_insert_value(&record, field, value);
    return g_variant_dict_end(&record);
}

/// Nested records with a struct at the bottom.
GVariant *nested()
{
    GVariant *bottom = g_variant_new("(@ayt)", bytes(), std::numeric_limits<std::uint64_t>::max());
    return recordOf("outer", recordOf("middle", recordOf("inner", bottom)));
}

GVariant *pairs()
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ix)"));
    g_variant_builder_add(&builder, "(ix)", 1, std::int64_t(1) << 40);
    g_variant_builder_add(&builder, "(ix)", 2, -(std::int64_t(1) << 40));
    return g_variant_builder_end(&builder);
}

void echo(Model &model, const char *path)
{
    model.send(path, g_variant_new_int64(std::numeric_limits<std::int64_t>::min()));
    model.send(path, g_variant_new_uint64(std::numeric_limits<std::uint64_t>::max()));
    model.send(path, g_variant_new_int16(std::numeric_limits<std::int16_t>::min()));
    model.send(path, g_variant_new_double(0.1));
    model.send(path, g_variant_new_string("\xe2\x99\xab"));
    model.send(path, bytes());
    model.send(path, nested());
    model.send(path, pairs());
    const char *const texts[] = {"a", "", nullptr};
    model.send(path, g_variant_new_strv(texts, -1));
}

/// Prints all changes at the path until its node is withdrawn.
void follow(Model &model, const char *path)
{
    for (const char *change : {"value", "rows", "node"}) {
        model.print("Subscribe", g_variant_new("(ss)", path, change));
    }
    model.run([&model](const std::string &name, GVariant *arguments) {
        gboolean isPublished = TRUE;
        if (name == "NodeChanged") {
            g_variant_get(arguments, "(&sb)", nullptr, &isPublished);
        }
        if (!isPublished) {
            model.quit();
        }
    });
}

/// Receives one request.
void receive(Model &model)
{
    const auto answer = model.call("OpenInbox", nullptr);
    const char *path = nullptr;
    g_variant_get(answer.get(), "(&s)", &path);
    Glib::print(path);
    model.run([&model](const std::string &, GVariant *) { model.quit(); });
    model.print("CloseInbox", g_variant_new("(s)", path));
}
} // namespace

int main(int argc, char **argv)
{
    const std::string task = argc > 1 ? argv[1] : "";
    const char *path = argc > 2 ? argv[2] : "";
    Model model;
    if (task == "echo") {
        echo(model, path);
    } else if (task == "get") {
        model.print("GetValue", g_variant_new("(s)", path));
    } else if (task == "send") {
        model.send(path, g_variant_new_boolean(TRUE));
    } else if (task == "follow") {
        follow(model, path);
    } else if (task == "receive") {
        receive(model);
    } else if (task == "version") {
        const Glib::Owned<GVariant> version(
            g_dbus_proxy_get_cached_property(model.proxy(), "Version"));
        Glib::print(Glib::textOf(version.get()));
    } else {
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
