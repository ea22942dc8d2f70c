// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A door bell: a program that plays a sound through the host, prints how it ended, and shows a
// message on the display.

#include <client/TavoClient.h>
#include <client/TavoInbox.h>
#include <client/TavoMessages.h>

#include <QCoreApplication>
#include <QUrl>
#include <QUuid>

#include <cstdio>

namespace {
void fail(const CMError &error)
{
    std::fprintf(stderr, "doorbell: %s\n", qPrintable(error.message().toString()));
    QCoreApplication::exit(1);
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "Usage: doorbell BUS SOUND\n");
        return 2;
    }
    const QString sound = QUrl::fromLocalFile(QString::fromLocal8Bit(argv[2])).toString();

    // A random id, since another bell may ring at the same time.
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);

    TavoClient client(QString::fromLocal8Bit(argv[1]));
    TavoMessages messages(&client);
    TavoInbox inbox(&client);

    QObject::connect(&client, &TavoClient::availableChanged, [&](bool available) {
        if (!available) {
            fail(CMError(QStringLiteral("Doorbell"), client.unavailableReason()));
        }
    });

    // Emitted when a host is there, and again after the host has restarted.
    QObject::connect(&inbox, &TavoInbox::opened, [&](const CMPath &path) {
        const auto bell = TavoNotificationPlayerItem()
                              .setId(id)
                              .setContent(sound)
                              .setPriority(TavoNotificationItemPriority::High)
                              .setPlaybackResponsePath(path);
        client.enqueue(bell).onFinished(&app, [](const CMReply<QVariant> &answer) {
            if (answer.error().isError()) {
                fail(answer.error());
            }
        });
    });

    QObject::connect(&inbox, &TavoInbox::responded, [&](const auto &response) {
        using Type = TavoNotificationPlayerResponseType;
        if (response.id() != id) {
            return; // anybody can send to an inbox
        }
        std::printf("%s\n", qPrintable(Type::toString(response.type())));
        if (response.type() == Type::Started) {
            return;
        }
        TavoMessage message;
        message.title = QStringLiteral("Door");
        message.text = QStringLiteral("Somebody rang");
        messages.show(message).onFinished(&app, [](const CMReply<uint> &answer) {
            if (answer.error().isError()) {
                fail(answer.error());
            } else {
                QCoreApplication::quit();
            }
        });
    });
    return app.exec();
}
