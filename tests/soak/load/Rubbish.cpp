// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Rubbish.h"

#include <limits>
#include <vector>

QVariant rubbish(Dice &dice, int depth)
{
    static const QStringList keys{QStringLiteral("notificationPlayerItem"),
                                  QStringLiteral("notificationDisplayItem"),
                                  QStringLiteral("path"),
                                  QStringLiteral("string"),
                                  QStringLiteral("type"),
                                  QStringLiteral("priority"),
                                  QStringLiteral("timeout"),
                                  QStringLiteral("loop"),
                                  QStringLiteral("revokeResources"),
                                  QStringLiteral("messageType"),
                                  QStringLiteral("message"),
                                  QStringLiteral("duckAudio"),
                                  QStringLiteral("resource"),
                                  QStringLiteral("action"),
                                  QStringLiteral("double")};
    switch (dice.number(0, depth > 0 ? 9 : 6)) {
    case 0:
        return {};
    case 1:
        return dice.number(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    case 2:
        return QString(dice.number(0, 300), QChar(dice.number(0, 0xffff)));
    case 3:
        return std::numeric_limits<double>::quiet_NaN();
    case 4:
        return QByteArray(dice.number(0, 300), char(dice.number(0, 255)));
    case 5:
        return dice.percent(50);
    case 6:
        return QVariant::fromValue(static_cast<QObject *>(nullptr));
    case 7:
        return QVariantList{rubbish(dice, depth - 1), rubbish(dice, depth - 1)};
    default:
        break;
    }
    QVariantHash hash;
    for (int i = dice.number(0, 4); i > 0; --i) {
        hash.insert(dice.oneOf(keys), rubbish(dice, depth - 1));
    }
    return hash;
}

CMPath rubbishPath(Dice &dice)
{
    static const std::vector<CMPath> paths{TavoNotificationPlayerEnqueuePath(),
                                           TavoNotificationPlayerCancelPath(),
                                           TavoNotificationDisplayOpenPath(),
                                           TavoNotificationDisplayCancelNotifyPath(),
                                           TavoNotificationsPath() +
                                               QStringLiteral("/player/revokeResources"),
                                           TavoNotificationPlayerIsPlayingPath(),
                                           TavoNotificationDisplayQueuePath(),
                                           TavoPowerManagerModuleRegisterPath(),
                                           TavoPowerManagerResourceRequestPath(),
                                           TavoPlayerMainAudioDuckingPath(),
                                           TavoPlayerMainAudioPlayPath(),
                                           TavoPlayerMainAudioVolumePath(),
                                           CMPath(QStringLiteral("/soak/nowhere")),
                                           CMPath()};
    return dice.oneOf(paths);
}
