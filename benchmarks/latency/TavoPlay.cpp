// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// tavo_play DEVICE FILE [COUNT]: plays a sound COUNT times, one after the other, and prints when
// each was requested.

#include "../Moment.h"
#include <simpleplayer/UriSimplePlayer.h>

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace {

class Rounds
{
public:
    Rounds(const QString &device, const QString &file, int count)
        : m_device(device)
        , m_file(file)
        , m_left(count)
    {
    }

    void next()
    {
        if (m_left-- == 0) {
            QCoreApplication::quit();
            return;
        }
        auto *player = new UriSimplePlayer(m_file, QStringLiteral("sound"), m_device, qApp);
        player->usage = SimplePlayer::UsageNotification;
        QObject::connect(player, &SimplePlayer::playbackErrorReported, player, &Rounds::fail);
        QObject::connect(player, &SimplePlayer::playbackEnded, player, [this, player] {
            player->deleteLater();
            next();
        });
        const std::int64_t requested = momentNow();
        if (!player->play()) {
            fail();
        }
        std::printf("%lld\n", static_cast<long long>(requested));
    }

private:
    static void fail() { QCoreApplication::exit(EXIT_FAILURE); }

    const QString m_device;
    const QString m_file;
    int m_left;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        return EXIT_FAILURE;
    }
    qputenv("QT_NO_GLIB", "1"); // as in the host
    const QCoreApplication application(argc, argv);
    Rounds rounds(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]),
                  argc > 3 ? std::atoi(argv[3]) : 1);
    QMetaObject::invokeMethod(
        qApp, [&rounds] { rounds.next(); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
