// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Actions.h"

#include "Requests.h"
#include "Rubbish.h"

#include <limits>

namespace {
// Limits, because a queue that only grows would test little.
constexpr int maxSounds = 30;
constexpr int maxDisplays = 40;

constexpr int observedShare = 85;
} // namespace

Actions::Actions(Situation &situation, std::uint64_t seed)
    : m_situation(situation)
    , m_ledger(situation.ledger)
    , m_dice(seed)
    , m_menu(situation, m_dice)
{
}

QString Actions::moduleName(int number)
{
    return QStringLiteral("Soak%1").arg(number);
}

CMPath Actions::responsePath()
{
    return CMPath(QStringLiteral("/soak/response"));
}

CMPath Actions::echoPath()
{
    return CMPath(QStringLiteral("/soak/echo"));
}

CMPath Actions::sharedPath(int number)
{
    return CMPath(QStringLiteral("/soak/shared/%1").arg(number));
}

CMPath Actions::vanishingPath(int number)
{
    return CMPath(QStringLiteral("/soak/vanishing/%1").arg(number));
}

int Actions::pauseMs()
{
    return m_dice.percent(10) ? m_dice.number(20, 200) : m_dice.number(0, 12);
}

void Actions::warmUp()
{
    for (TavoNotificationPlayerItem &item : m_menu.oneOfEach()) {
        item.setId(QStringLiteral("o%1").arg(++m_situation.lastId))
            .setPlaybackResponsePath(responsePath());
        sendSound(m_ledger, item, true);
    }
    for (const QString &source :
         {m_menu.httpSound(), m_situation.sounds + QStringLiteral("/music.wav")}) {
        sendRequest(m_ledger, RequestKind::PlayMusic, TavoPlayerMainAudioPlayPath(),
                    TavoValue().setString_(source).__variant());
    }
}

void Actions::act()
{
    const int kind = m_dice.number(0, 999);
    if (kind < 240) {
        enqueueSound();
    } else if (kind < 320) {
        cancelSound();
    } else if (kind < 520) {
        openDisplay();
    } else if (kind < 640) {
        closeDisplay();
    } else if (kind < 710) {
        askPowerManager();
    } else if (kind < 770) {
        duck();
    } else if (kind < 790) {
        changeMusic();
    } else if (kind < 880) {
        read();
    } else if (kind < 930) {
        echo();
    } else if (kind < 990) {
        sendRubbish();
    } else {
        forgeRevoke();
    }
}

TavoNotificationItemPriority::Enum Actions::priority()
{
    static const std::vector<int> strange{-1, -5, 7, std::numeric_limits<int>::max(),
                                          std::numeric_limits<int>::min()};
    const int value = m_dice.percent(5) ? m_dice.oneOf(strange) : m_dice.number(0, 3);
    return TavoNotificationItemPriority::Enum(value);
}

void Actions::enqueueSound()
{
    if (m_ledger.liveCount() >= maxSounds) {
        cancelSound();
        return;
    }
    SoundMenu::Choice choice = m_menu.choose();
    bool observed = m_dice.percent(observedShare);
    // The id says how its responses are observed and which FIFO it reads.
    QString id = QStringLiteral("%1%2").arg(observed ? 'o' : 'u').arg(++m_situation.lastId);
    if (choice.fifo >= 0) {
        id += QStringLiteral("-fifo%1").arg(choice.fifo);
    }
    if (m_dice.percent(2)) {
        id.clear();
    } else if (const QString taken = m_ledger.anySound(m_dice);
               !taken.isEmpty() && m_dice.percent(3)) {
        id = taken;
        observed = id.startsWith(QLatin1Char('o'));
    }
    choice.item.setId(id).setPriority(priority());
    if (observed) {
        choice.item.setPlaybackResponsePath(responsePath());
    } else if (m_dice.percent(70)) {
        choice.item.setPlaybackResponsePath(vanishingPath(m_dice.number(0, vanishingCount)));
    }
    m_situation.actions.note(QStringLiteral("enqueue %1 type %2 priority %3 loop %4 %5")
                                 .arg(id)
                                 .arg(int(choice.item.type()))
                                 .arg(int(choice.item.priority()))
                                 .arg(choice.item.loop())
                                 .arg(choice.item.type() == TavoNotificationPlayerItemType::Data
                                          ? QString()
                                          : choice.item.content().section(QLatin1Char('/'), -2)));
    sendSound(m_ledger, choice.item, observed);
}

void Actions::cancelSound()
{
    const QString live = m_dice.percent(50) ? m_ledger.lastStarted() : m_ledger.anySound(m_dice);
    const QString id = live.isEmpty() || m_dice.percent(10)
                           ? QStringLiteral("o%1").arg(m_dice.number(0, m_situation.lastId))
                           : live;
    m_situation.actions.note(QStringLiteral("cancel ") + id);
    sendSoundCancel(m_ledger, id);
}

TavoNotificationDisplayItem Actions::message()
{
    TavoNotificationDisplayItem item;
    if (m_dice.percent(60)) {
        item.setMessage(TrString(QString(m_dice.number(1, 60), QLatin1Char('m'))));
        if (m_dice.percent(50)) {
            item.setTitle(TrString(QStringLiteral("A title")));
        }
        return item;
    }
    if (m_dice.percent(85)) {
        item.setPath(sharedPath(m_dice.number(0, sharedCount)));
    }
    return item;
}

void Actions::openDisplay()
{
    if (m_ledger.displaysOpen() >= maxDisplays) {
        sendDisplayCancels(m_ledger, maxDisplays / 4);
        return;
    }
    if (m_dice.percent(50)) {
        const CMPath closed = m_ledger.takeMessageToClean();
        if (!closed.isEmpty()) {
            m_situation.actions.note(QStringLiteral("clean ") + closed.toString());
            nameMessage(m_ledger, closed);
            return;
        }
    }
    const int timeout = m_dice.percent(8) ? m_dice.number(-5, 0) : m_dice.number(1, 200);
    const TavoNotificationDisplayItem item = message().setTimeout(timeout).setPriority(priority());
    m_situation.actions.note(QStringLiteral("open display %1 priority %2 timeout %3")
                                 .arg(item.path().toString())
                                 .arg(int(item.priority()))
                                 .arg(timeout));
    sendDisplayOpen(m_ledger, RequestKind::OpenDisplay,
                    TavoValue().setNotificationDisplayItem(item).__variant());
}

void Actions::closeDisplay()
{
    CMPath path = m_ledger.anyDisplay(m_dice);
    if (path.isEmpty() || m_dice.percent(25)) {
        path = m_dice.percent(10) ? CMPath() : sharedPath(m_dice.number(0, sharedCount));
    }
    m_situation.actions.note(QStringLiteral("close display ") + path.toString());
    if (m_dice.percent(40)) {
        CMSubscribe::closeNode(path);
        m_ledger.count(QStringLiteral("displays closed by a client"));
        return;
    }
    sendDisplayCancel(m_ledger, path);
}

void Actions::askPowerManager()
{
    const int kind = m_dice.number(0, 99);
    const auto name = moduleName(m_dice.number(0, moduleCount)); // one more than there are
    if (kind < 4) {
        m_situation.actions.note(QStringLiteral("standby"));
        sendRequest(m_ledger, RequestKind::Standby, TavoPowerManagerStandbyPath(), {});
        return;
    }
    if (kind < 30) {
        m_situation.actions.note(QStringLiteral("resume"));
        sendRequest(m_ledger, RequestKind::Resume, TavoPowerManagerResumePath(), {});
        return;
    }
    const bool acquire = kind < 70;
    const auto resource = TavoPowerManagerResources::Enum(m_dice.number(-1, 4));
    m_situation.actions.note(
        QStringLiteral("%1 %2 for %3")
            .arg(acquire ? QStringLiteral("acquire") : QStringLiteral("release"))
            .arg(int(resource))
            .arg(name));
    sendRequest(
        m_ledger, acquire ? RequestKind::Acquire : RequestKind::Release,
        TavoPowerManagerResourceRequestPath(),
        TavoPowerManagerResourceRequest()
            .setModuleName(name)
            .setResource(resource)
            .setAction(acquire ? TavoPowerModuleActions::Acquire : TavoPowerModuleActions::Release)
            .__variant());
}

void Actions::duck()
{
    const bool on = m_dice.percent(50);
    const QString name = moduleName(m_dice.number(0, moduleCount - 1));
    m_situation.actions.note(QStringLiteral("duck %1 for %2").arg(on).arg(name));
    sendRequest(m_ledger, RequestKind::Duck, TavoPlayerMainAudioDuckingPath(),
                TavoPlayerAudioDuckingRequest().setRequester(name).setDuckAudio(on).__variant());
}

void Actions::changeMusic()
{
    const int kind = m_dice.number(0, 99);
    if (kind < 40) {
        const QString source = m_dice.percent(80)
                                   ? m_situation.sounds + QStringLiteral("/music.wav")
                               : m_dice.percent(50) ? m_menu.choose().item.content()
                                                    : QString();
        m_situation.actions.note(QStringLiteral("music ") + source.right(40));
        sendRequest(m_ledger, RequestKind::PlayMusic, TavoPlayerMainAudioPlayPath(),
                    TavoValue().setString_(source).__variant());
    } else if (kind < 55) {
        m_situation.actions.note(QStringLiteral("stop music"));
        sendRequest(m_ledger, RequestKind::StopMusic, TavoPlayerMainAudioStopPath(), {});
    } else {
        sendRequest(m_ledger, RequestKind::SetVolume, TavoPlayerMainAudioVolumePath(),
                    TavoValue().setDouble_(m_dice.number(-10, 110) / 100.0).__variant());
    }
}

void Actions::read()
{
    static const std::vector<CMPath> values{
        TavoNotificationPlayerIsPlayingPath(), TavoPowerManagerStatePath(),
        TavoPlayerMainAudioStatePath(), TavoPlayerAlsaDeviceNotificationsPath(),
        CMPath(QStringLiteral("/soak/nowhere"))};
    static const std::vector<CMPath> rows{TavoNotificationDisplayQueuePath(), sharedPath(0),
                                          TavoNotificationPlayerEnqueuePath()};
    if (m_dice.percent(50)) {
        CMRoot()->getValue(m_dice.oneOf(values));
        m_ledger.count(QStringLiteral("values read"));
    } else {
        sendRowsRequest(m_ledger, m_dice.oneOf(rows));
    }
}

void Actions::echo()
{
    sendRequest(m_ledger, RequestKind::Echo, echoPath(), m_dice.number(0, 99));
}

void Actions::forgeRevoke()
{
    const auto type = TavoPowerManagerRevokeMessageType::Enum(m_dice.number(0, 2));
    const auto resource = TavoPowerManagerResources::Enum(m_dice.percent(70) ? 2 : 1);
    m_situation.actions.note(QStringLiteral("revoke type %1").arg(int(type)));
    sendRequest(m_ledger, RequestKind::Revoke,
                TavoNotificationsPath() + QStringLiteral("/player/revokeResources"),
                TavoPowerManagerRevokeMessage()
                    .setMessageType(type)
                    .setRevokeResources({resource})
                    .__variant());
}

void Actions::sendRubbish()
{
    constexpr int depth = 3;
    const CMPath path = rubbishPath(m_dice);
    const QVariant value = rubbish(m_dice, depth);
    m_situation.actions.note(QStringLiteral("rubbish to ") + path.toString());
    if (path == TavoNotificationDisplayOpenPath()) {
        sendDisplayOpen(m_ledger, RequestKind::Garbage, value);
    } else {
        sendRequest(m_ledger, RequestKind::Garbage, path, value);
    }
}
