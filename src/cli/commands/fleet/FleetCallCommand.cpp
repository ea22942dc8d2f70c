// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetCallCommand.h"

#include "base/Printable.h"
#include "cli/commands/fleet/FleetCallText.h"
#include <core/base/connect.h>

#include <algorithm>

namespace {
constexpr int firstRepeatMs = 1000;
constexpr int maxRepeatMs = 16000;
constexpr int progressMs = 100;
} // namespace

FleetCallCommand::FleetCallCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : FleetCommand(options, client, terminal)
{
    tavoConnect(&m_repeat, &QTimer::timeout, this, &FleetCallCommand::on_repeat_timeout);
    tavoConnect(&m_progress, &QTimer::timeout, this, &FleetCallCommand::on_progress_timeout);
}

bool FleetCallCommand::prepare()
{
    if (options().fleetDevices.empty() && options().fleetGroups.empty()) {
        fail(ExitCode::Usage, QStringLiteral("whom to call is missing: --device or --group"));
        return false;
    }
    for (const auto *names : {&options().fleetDevices, &options().fleetGroups}) {
        for (const std::string &name : *names) {
            if (!isFleetName(QString::fromStdString(name))) {
                fail(ExitCode::Usage, QStringLiteral("%1 can't be the name of a device or a group")
                                          .arg(QString::fromStdString(name)));
                return false;
            }
        }
    }
    const auto call = fleetCall(options());
    if (const auto *failure = std::get_if<Failure>(&call)) {
        fail(ExitCode::Usage, failure->reason);
        return false;
    }
    m_call = std::get<FleetCall>(call);
    m_call.from = name();
    for (const std::string &device : options().fleetDevices) {
        expect(QString::fromStdString(device));
    }
    m_since.start();
    m_untilStart = qMax(Q_INT64_C(0), m_call.at - QDateTime::currentMSecsSinceEpoch());
    m_progress.start(progressMs);
    return true;
}

/// A sound is answered when it starts.
int FleetCallCommand::timeLimitMs() const
{
    return int(m_untilStart) + FleetCommand::timeLimitMs();
}

QStringList FleetCallCommand::filters() const
{
    return {FleetTopics::answer(QStringLiteral("+"), name())};
}

void FleetCallCommand::onConnected()
{
    for (const std::string &group : options().fleetGroups) {
        send(FleetTopics::groupCall(QString::fromStdString(group)));
    }
    for (const QString &device : missing()) {
        send(FleetTopics::call(device));
    }
    m_repeat.start(firstRepeatMs);
}

void FleetCallCommand::send(const QString &topic)
{
    MqttMessage message{topic, m_call.toJson()};
    // It is not carried out after this program has said that it was not. The broker counts this time, as the
    // clocks of the devices may be wrong.
    constexpr qint64 msPerSecond = 1000;
    const qint64 left = timeLimitMs() - m_since.elapsed();
    message.expirySeconds = int(qMax(Q_INT64_C(1), (left + msPerSecond - 1) / msPerSecond));
    m_sent.insert(publish(message), topic);
}

void FleetCallCommand::sendToMissing()
{
    for (const QString &device : missing()) {
        send(FleetTopics::call(device));
    }
}

QStringList FleetCallCommand::missing() const
{
    QStringList names(m_missing.begin(), m_missing.end());
    names.sort();
    return names;
}

bool FleetCallCommand::isComplete() const
{
    const bool isKnown = m_areGroupsKnown || options().fleetGroups.empty();
    return isKnown && m_missing.isEmpty() && !m_answers.isEmpty();
}

void FleetCallCommand::on_repeat_timeout()
{
    sendToMissing();
    // Nobody answers before the start.
    const int max = qMax(maxRepeatMs, int(m_untilStart - m_since.elapsed()) / 2);
    m_repeat.setInterval(qMin(m_repeat.interval() * 2, max));
}

void FleetCallCommand::onDevicesKnown()
{
    m_areGroupsKnown = true;
    expectGroups();
    finishIfAnswered();
}

void FleetCallCommand::expectGroups()
{
    for (const std::string &group : options().fleetGroups) {
        for (const QString &device : devices().inGroup(QString::fromStdString(group))) {
            expect(device);
        }
    }
}

void FleetCallCommand::expect(const QString &device)
{
    if (!m_answers.contains(device)) {
        m_missing.insert(device);
    }
}

void FleetCallCommand::onMessage(const FleetTopic &topic, const MqttMessage &message)
{
    if (topic.kind == FleetTopic::Kind::Answer) {
        takeAnswer(topic.name, message.payload);
    } else if (m_areGroupsKnown && topic.kind == FleetTopic::Kind::Online &&
               devices().device(topic.name).isOnline && isChosen(topic.name)) {
        // It has come back, or is new.
        expect(topic.name);
        if (m_missing.contains(topic.name)) {
            send(FleetTopics::call(topic.name));
        }
    }
}

void FleetCallCommand::takeAnswer(const QString &device, const QByteArray &payload)
{
    const auto read = FleetAnswer::fromJson(payload);
    const auto *answer = std::get_if<FleetAnswer>(&read);
    // The device is that of the topic, which the broker's access rules check.
    const bool isNew = answer != nullptr && answer->id == m_call.id && !m_answers.contains(device);
    if (!isNew) {
        return;
    }
    m_answers.insert(device, *answer);
    m_answerTimes.insert(device, m_since.elapsed());
    m_missing.remove(device);
    if (!options().json) {
        const bool isError = answer->kind == FleetAnswer::Kind::Error;
        constexpr int maxSize = 1000;
        printLine(device, shortened(answerText(*answer, m_call.kind), maxSize),
                  isError ? Terminal::Style::Bad : Terminal::Style::Good);
    }
    finishIfAnswered();
}

void FleetCallCommand::finishIfAnswered()
{
    if (isComplete()) {
        report();
    }
}

void FleetCallCommand::onTimeUp()
{
    FleetCommand::onTimeUp();
    if (!isFinished()) {
        report();
    }
}

void FleetCallCommand::onDisconnected(const QString & /*reason*/)
{
    // The call is sent again when the broker is back, until the time is up.
}

void FleetCallCommand::onRefused(int number, const QString &reason)
{
    if (m_sent.contains(number)) {
        m_progress.stop();
        fail(ExitCode::Refused,
             QStringLiteral("a call to %1 is refused: %2").arg(m_sent.value(number), reason));
    }
}

void FleetCallCommand::report()
{
    m_progress.stop();
    if (options().json) {
        printAsJson();
    } else {
        printMissing();
    }
    const bool isRefused =
        std::any_of(m_answers.begin(), m_answers.end(), [](const FleetAnswer &answer) {
            return answer.kind == FleetAnswer::Kind::Error;
        });
    const bool hasNoTarget =
        m_call.kind == FleetCall::Kind::Cancel &&
        std::none_of(m_answers.begin(), m_answers.end(),
                     [](const FleetAnswer &answer) { return answer.value.toBool(); });
    if (!isComplete()) {
        fail(ExitCode::TimedOut, missingText());
        return;
    }
    finish(isRefused || hasNoTarget ? ExitCode::Refused : ExitCode::Ok);
}

QString FleetCallCommand::missingText() const
{
    if (!m_missing.isEmpty()) {
        return QStringLiteral("%1 of %2 devices did not answer in time")
            .arg(m_missing.size())
            .arg(m_missing.size() + m_answers.size());
    }
    return m_answers.isEmpty() ? QStringLiteral("no device answered")
                               : QStringLiteral("the broker did not tell all devices of the group "
                                                "in time: some may be missing");
}

void FleetCallCommand::printMissing()
{
    for (const QString &device : missing()) {
        const FleetDevice known = devices().device(device);
        printLine(device, known.isOnline ? QStringLiteral("no answer") : QStringLiteral("absent"),
                  Terminal::Style::Bad);
    }
}

void FleetCallCommand::printLine(const QString &device, const QString &text, Terminal::Style style)
{
    constexpr int width = 16;
    const bool isTerminal = terminal().isTerminal();
    terminal().print(isTerminal
                         ? terminal().styled(device.leftJustified(width), Terminal::Style::Bold) +
                               QStringLiteral("  ") + terminal().styled(printable(text), style)
                         : device + QLatin1Char('\t') + printable(text));
}

void FleetCallCommand::printAsJson()
{
    QStringList names = missing() + m_answers.keys();
    names.sort();
    QVariantList rows;
    for (const QString &device : names) {
        QVariantHash row{{QStringLiteral("device"), device},
                         {QStringLiteral("answered"), m_answers.contains(device)}};
        if (m_answers.contains(device)) {
            row.insert(answerFields(m_answers.value(device)));
            row.insert(QStringLiteral("ms"), m_answerTimes.value(device));
        } else {
            row.insert(QStringLiteral("online"), devices().device(device).isOnline);
        }
        rows.append(row);
    }
    print(QVariantHash{{QStringLiteral("id"), m_call.id},
                       {QStringLiteral("answered"), m_answers.size()},
                       {QStringLiteral("missing"), m_missing.size()},
                       {QStringLiteral("devices"), rows}},
          {});
}

void FleetCallCommand::on_progress_timeout()
{
    showProgress();
}

void FleetCallCommand::showProgress()
{
    constexpr double msPerSecond = 1000;
    const qint64 now = m_since.elapsed();
    const bool isEarly = now < m_untilStart;
    const QString time =
        QString::number(double(isEarly ? m_untilStart - now : now) / msPerSecond, 'f', 1);
    if (isEarly && hasBeenConnected()) {
        terminal().showLive(QStringLiteral("starts in %1 s").arg(time));
        return;
    }
    terminal().showLive(!hasBeenConnected()
                            ? QStringLiteral("connecting, %1 s: %2").arg(time, lastReason())
                            : QStringLiteral("%1 of %2 devices have answered, %3 s")
                                  .arg(m_answers.size())
                                  .arg(m_areGroupsKnown
                                           ? QString::number(m_missing.size() + m_answers.size())
                                           : QStringLiteral("?"))
                                  .arg(time));
}
