/* SPDX-FileCopyrightText: 2026 The Tavo developers
 * SPDX-License-Identifier: Apache-2.0
 *
 * A door bell in C: plays a sound through the host, prints how it ends, and shows a message.
 *
 * Usage: doorbell SOUND
 *
 * With the Debian package libglib2.0-dev, it is built by
 *     cc doorbell.c -o doorbell $(pkg-config --cflags --libs gio-2.0)
 */

#include <gio/gio.h>

struct doorbell
{
    GDBusProxy *host;
    GMainLoop *loop;
    char *id;    /* of the sound */
    char *inbox; /* the node to which the host reports what becomes of the sound */
    gboolean failed;
};

static void fail(struct doorbell *bell, const char *reason)
{
    g_printerr("doorbell: %s\n", reason);
    bell->failed = TRUE;
    g_main_loop_quit(bell->loop);
}

/* Calls the host and waits for its reply. Returns NULL after an error. */
static GVariant *call(struct doorbell *bell, const char *method, GVariant *arguments)
{
    GError *error = NULL;
    GVariant *reply = g_dbus_proxy_call_sync(bell->host, method, arguments, G_DBUS_CALL_FLAGS_NONE,
                                             -1, NULL, &error);
    if (!reply) {
        fail(bell, error->message);
        g_error_free(error);
    }
    return reply;
}

/* Sends a record to a node: a hash with one field, which is the record. Returns whether it was accepted. */
static gboolean send_record(struct doorbell *bell, const char *path, const char *name,
                            GVariantDict *record)
{
    GVariantDict value;
    g_variant_dict_init(&value, NULL);
    g_variant_dict_insert_value(&value, name, g_variant_dict_end(record));
    GVariant *reply =
        call(bell, "Call", g_variant_new("(sv)", path, g_variant_dict_end(&value)));
    if (!reply) {
        return FALSE;
    }
    g_variant_unref(reply);
    return TRUE;
}

static void show(struct doorbell *bell)
{
    GVariantDict message;
    g_variant_dict_init(&message, NULL);
    g_variant_dict_insert(&message, "title", "s", "Door");
    g_variant_dict_insert(&message, "message", "s", "Somebody rang");
    g_variant_dict_insert(&message, "timeout", "i", 10000);
    send_record(bell, "/notifications/display/open", "notificationDisplayItem", &message);
    g_main_loop_quit(bell->loop);
}

static gboolean ring(struct doorbell *bell, const char *sound)
{
    GVariant *opened = call(bell, "OpenInbox", NULL);
    if (!opened) {
        return FALSE;
    }
    g_variant_get(opened, "(s)", &bell->inbox);
    g_variant_unref(opened);

    GVariantDict item;
    g_variant_dict_init(&item, NULL);
    g_variant_dict_insert(&item, "id", "s", bell->id);
    g_variant_dict_insert(&item, "content", "s", sound);
    g_variant_dict_insert(&item, "priority", "i", 2); /* high */
    g_variant_dict_insert(&item, "playbackResponsePath", "s", bell->inbox);
    return send_record(bell, "/notifications/player/enqueue", "notificationPlayerItem", &item);
}

/* Takes a report about a sound. */
static void on_response(struct doorbell *bell, GVariant *response)
{
    static const char *const names[] = {"Unknown", "Started", "Finished", "Cancelled", "Failed"};
    const char *id = "";
    gint32 type = 0;
    g_variant_lookup(response, "id", "&s", &id);
    g_variant_lookup(response, "type", "i", &type);
    if (!g_str_equal(id, bell->id)) {
        return; /* anybody can send to an inbox */
    }
    g_print("%s\n", names[type > 0 && type < (gint32)G_N_ELEMENTS(names) ? type : 0]);
    if (type != 1) {
        show(bell);
    }
}

static void on_signal(GDBusProxy *host, const char *sender, const char *signal, GVariant *arguments,
                      gpointer data)
{
    struct doorbell *bell = data;
    (void)host;
    (void)sender;
    if (!g_str_equal(signal, "Received")) {
        return;
    }
    const char *inbox = NULL;
    GVariant *value = NULL;
    g_variant_get(arguments, "(&sv)", &inbox, &value);
    if (g_strcmp0(inbox, bell->inbox) == 0 && g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT)) {
        GVariant *response =
            g_variant_lookup_value(value, "notificationPlayerResponse", G_VARIANT_TYPE_VARDICT);
        if (response) {
            on_response(bell, response);
            g_variant_unref(response);
        }
    }
    g_variant_unref(value);
}

static void on_owner_changed(GDBusProxy *host, GParamSpec *property, gpointer data)
{
    char *owner = g_dbus_proxy_get_name_owner(host);
    (void)property;
    if (!owner) {
        fail(data, "the host has gone");
    }
    g_free(owner);
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        g_printerr("Usage: doorbell SOUND\n");
        return 64;
    }
    GError *error = NULL;
    struct doorbell bell = {0};
    /* G_BUS_TYPE_SYSTEM reaches the host of a device. */
    bell.host = g_dbus_proxy_new_for_bus_sync(G_BUS_TYPE_SESSION, G_DBUS_PROXY_FLAGS_NONE, NULL,
                                              "org.tavo.Model1", "/org/tavo/Model1",
                                              "org.tavo.Model1", NULL, &error);
    if (!bell.host) {
        g_printerr("doorbell: %s\n", error->message);
        g_error_free(error);
        return 1;
    }
    bell.loop = g_main_loop_new(NULL, FALSE);
    bell.id = g_uuid_string_random(); /* another bell may ring at the same time */
    g_signal_connect(bell.host, "g-signal", G_CALLBACK(on_signal), &bell);
    g_signal_connect(bell.host, "notify::g-name-owner", G_CALLBACK(on_owner_changed), &bell);

    char *sound = g_canonicalize_filename(argv[1], NULL);
    if (ring(&bell, sound)) {
        g_main_loop_run(bell.loop);
    }
    g_free(sound);
    g_free(bell.inbox);
    g_free(bell.id);
    g_main_loop_unref(bell.loop);
    g_object_unref(bell.host);
    return bell.failed;
}
