// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Settling.h"

#include "Actions.h"
#include "Requests.h"

namespace {
constexpr int tickMs = 20;

// A cancelled sound takes some time to end. Until then it is useless to cancel again.
constexpr int roundsApart = 10;

constexpr int maxCancels = 20;

} // namespace

Settling::Settling(Situation &situation, QObject *parent)
    : QObject(parent)
    , m_situation(situation)
    , m_ledger(situation.ledger)
    , m_timer(this)
{
    m_timer.setInterval(tickMs);
    tavoConnect(&m_timer, &QTimer::timeout, this, &Settling::on_timer_timeout);
}

void Settling::start()
{
    m_step = Step::Emptying;
    m_rounds = 0;
    giveBack();
    m_timer.start();
}

void Settling::giveBack()
{
    sendRequest(m_ledger, RequestKind::Resume, TavoPowerManagerResumePath(), {});
    sendRequest(m_ledger, RequestKind::StopMusic, TavoPlayerMainAudioStopPath(), {});
    for (int i = 0; i < Actions::moduleCount; ++i) {
        const QString name = Actions::moduleName(i);
        sendRequest(
            m_ledger, RequestKind::Duck, TavoPlayerMainAudioDuckingPath(),
            TavoPlayerAudioDuckingRequest().setRequester(name).setDuckAudio(false).__variant());
        for (int resource = 0; resource < 4; ++resource) {
            sendRequest(m_ledger, RequestKind::Release, TavoPowerManagerResourceRequestPath(),
                        TavoPowerManagerResourceRequest()
                            .setModuleName(name)
                            .setResource(TavoPowerManagerResources::Enum(resource))
                            .setAction(TavoPowerModuleActions::Release)
                            .__variant());
        }
    }
}

void Settling::on_timer_timeout()
{
    // One round after the other, so that requests without a reply stand out.
    if (m_ledger.unanswered() > 0) {
        return;
    }
    switch (m_step) {
    case Step::Emptying:
        if (isEmpty()) {
            close();
            return;
        }
        if (m_rounds++ % roundsApart == 0) {
            emptySounds();
        }
        emptyDisplays();
        return;
    case Step::Closing:
        if (m_ledger.liveCount() == 0 && disquiet().isEmpty()) {
            lookForNodes();
        }
        return;
    case Step::Looking:
        finish();
        return;
    case Step::Done:
        return;
    }
}

void Settling::emptySounds()
{
    for (const QString &id : m_ledger.liveSounds()) {
        if (m_situation.planted.sound && id.startsWith(QLatin1String("o-stuck"))) {
            continue;
        }
        sendSoundCancel(m_ledger, id);
    }
}

void Settling::emptyDisplays()
{
    for (int i = 0; i < maxCancels; ++i) {
        const CMPath path = m_ledger.takeMessageToClean();
        if (path.isEmpty()) {
            break;
        }
        nameMessage(m_ledger, path);
    }
    if (m_ledger.displaysOpen() > 0) {
        sendDisplayCancels(m_ledger, maxCancels);
    }
}

bool Settling::isEmpty() const
{
    return m_ledger.liveCount() == 0 && m_ledger.displaysAreGone();
}

void Settling::close()
{
    m_step = Step::Closing;
    sendSound(m_ledger,
              TavoNotificationPlayerItem()
                  .setId(QStringLiteral("o-settle%1").arg(++m_situation.lastId))
                  .setType(TavoNotificationPlayerItemType::Fake)
                  .setPlaybackResponsePath(Actions::responsePath()),
              true);
}

QString Settling::disquiet() const
{
    const auto valueAt = [](const CMPath &path) {
        return TavoValue(CMRoot()->getValue(path).toHash());
    };
    QStringList what;
    if (valueAt(TavoNotificationPlayerIsPlayingPath()).bool_()) {
        what.append(QStringLiteral("is-playing is true"));
    }
    const auto audio = valueAt(TavoPlayerMainAudioStatePath()).mainAudioState();
    for (int i = 0; i < audio.requesters().size(); ++i) {
        what.append(QStringLiteral("the main audio is ducked for ") + audio.requesters().at(i));
    }
    const auto power = valueAt(TavoPowerManagerStatePath()).powerManagerState();
    for (int i = 0; i < power.resources().size(); ++i) {
        what.append(
            QStringLiteral("resource %1 is held").arg(int(power.resources().at(i).resource())));
    }
    if (power.standby()) {
        what.append(QStringLiteral("the device is in standby"));
    }
    return what.join(QStringLiteral(", "));
}

// The node of a message that a later notification named must be gone.
void Settling::lookForNodes()
{
    m_step = Step::Looking;
    for (const CMPath &path : m_ledger.takeCleaned()) {
        sendRowsRequest(m_ledger, path, [this, path](bool accepted, const QVariant &) {
            if (accepted) {
                m_ledger.violation(QStringLiteral("the node of a message that was named is still "
                                                  "there: ") +
                                   path.toString());
            }
        });
    }
}

void Settling::finish()
{
    m_step = Step::Done;
    m_timer.stop();
    m_ledger.checkSettled();
    Q_EMIT settled();
}

QString Settling::awaited() const
{
    return QStringLiteral("step %1; unanswered: %2; sounds: %3; rows on display: %4; %5")
        .arg(int(m_step))
        .arg(m_ledger.unansweredText(), m_ledger.liveSounds().join(QLatin1Char(' ')))
        .arg(m_ledger.displaysOpen())
        .arg(disquiet());
}
