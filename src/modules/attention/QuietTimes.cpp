// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "QuietTimes.h"

#include <algorithm>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

constexpr int maxInhibitions = 1000;

/// The value of do-not-disturb must stay small enough to be read.
constexpr int maxShownInhibitions = 20;

/// In characters.
constexpr int maxNameLength = 256;
constexpr int maxReasonLength = 200;

constexpr int saveDelayMs = 1000;

/// The last time that the file can hold exactly, in some 285,000 years.
constexpr qint64 latest = qint64(1) << 53;

CMError error(const TrString &message)
{
    return {QStringLiteral("Attention"), message};
}

constexpr int maxPrograms = 1000; ///< that the summary counts
} // namespace

QuietTimes::QuietTimes(CMNodes *nodes, Entrance &entrance, const QString &file)
    : m_entrance(entrance)
    , m_file(file)
    , m_node(CMValueNode::create(nodes, TavoAttentionDoNotDisturbPath()))
{
    const QuietMemory memory = QuietMemory::read(m_file);
    m_missed = memory.missed;
    if (memory.choice) {
        m_doNotDisturb.restore(*memory.choice);
    }
    // If it is over by now, it has ended while the host did not run.
    m_isOn = !m_missed.isEmpty();
    m_writer.setExpiryTimeout(0); // A thread that does nothing would stay for half a minute.
    m_save.setSingleShot(true);
    m_save.setInterval(saveDelayMs);
    tavoConnect(&m_save, &QTimer::timeout, this, &QuietTimes::on_save_timeout);
    m_entrance.bind(nodes, TavoAttentionSetDoNotDisturbPath(), this, &QuietTimes::on_set_activated);
    m_entrance.bind(nodes, TavoAttentionInhibitPath(), this, &QuietTimes::on_inhibit_activated);
    tavoConnect(&m_alarm, &AlarmClock::rang, this, &QuietTimes::on_alarm_rang);
}

QuietTimes::~QuietTimes()
{
    m_writer.waitForDone();
    if (m_isUnsaved) {
        memory().write(m_file);
    }
}

void QuietTimes::start()
{
    m_isStarted = true;
    update();
}

bool QuietTimes::addMissed(QMap<QString, int> &missed, const QString &program, int count)
{
    if (missed.size() >= maxPrograms && !missed.contains(program)) {
        return false;
    }
    missed[program] += count;
    return true;
}

void QuietTimes::countMissed(const QString &user, const QString &name, int count)
{
    // As much as the summary shows. All of them must fit into the file.
    constexpr int maxLength = 50;
    const QString program = name.left(maxLength);
    // Many names of some users must not keep other programs out of the summary.
    constexpr int shares = 10;
    int &programs = m_programs[user];
    const bool isNew = !m_missed.contains(program);
    const int left = maxPrograms - (m_missed.size() - programs);
    if (isNew && !user.isEmpty() && programs >= left / shares) {
        return;
    }
    programs += isNew ? 1 : 0;
    if (addMissed(m_missed, program, count)) {
        m_isUnsaved = true;
        if (!m_save.isActive()) {
            m_save.start();
        }
    }
}

void QuietTimes::save()
{
    m_isUnsaved = true;
    if (!m_save.isActive()) {
        on_save_timeout();
    }
}

void QuietTimes::on_save_timeout()
{
    if (!m_isUnsaved) {
        return;
    }
    if (m_writer.activeThreadCount() == 0) {
        m_isUnsaved = false;
        m_writer.start([memory = memory(), file = m_file] { memory.write(file); });
    }
    m_save.start();
}

QuietMemory QuietTimes::memory() const
{
    return {m_doNotDisturb.choice(AlarmClock::now()), m_missed};
}

void QuietTimes::setSettings(const DoNotDisturbSettings &settings)
{
    m_doNotDisturb.setSettings(settings);
    if (m_isStarted) {
        update();
    }
}

void QuietTimes::on_set_activated(const CMSetDataRequest &request)
{
    const TavoAttentionDoNotDisturb chosen =
        TavoValue(request.value().toHash()).attentionDoNotDisturb();
    const qint64 now = AlarmClock::now();
    if (chosen.fields().value(QStringLiteral("on")).userType() != QMetaType::Bool) {
        request.reply().setError(error(TAVO_TR("The request does not say whether it is to be on")));
        return;
    }
    if (chosen.until() < 0 || (chosen.until() > 0 && chosen.until() <= now)) {
        request.reply().setError(error(TAVO_TR("The time is over")));
        return;
    }
    m_doNotDisturb.choose({chosen.on(), std::min(chosen.until(), latest)}, now);
    if (!chosen.on()) {
        m_inhibitions.clear();
    }
    update();
    save();
    request.reply().setValue(QVariant());
}

void QuietTimes::on_inhibit_activated(const CMSetDataRequest &request)
{
    const auto inhibition = TavoValue(request.value().toHash()).attentionInhibition();
    if (!inhibition.on()) {
        m_inhibitions.remove(inhibition.id()); // a person may have ended it already
    } else if (inhibition.id().isEmpty()) {
        request.reply().setError(error(TAVO_TR("The inhibition has no id")));
        return;
    } else if (m_inhibitions.size() >= maxInhibitions && !m_inhibitions.contains(inhibition.id())) {
        request.reply().setError(error(TAVO_TR("There are too many inhibitions")));
        return;
    } else {
        m_inhibitions[inhibition.id()] =
            TavoAttentionInhibition()
                .setOn(true)
                .setApplication(inhibition.application().left(maxNameLength))
                .setReason(inhibition.reason().left(maxReasonLength));
    }
    update();
    request.reply().setValue(QVariant());
}

TavoAttentionDoNotDisturb QuietTimes::state(qint64 now) const
{
    TavoList<TavoAttentionInhibition> inhibitions;
    for (const TavoAttentionInhibition &inhibition : m_inhibitions) {
        if (inhibitions.size() == maxShownInhibitions) {
            break;
        }
        inhibitions.append(inhibition);
    }
    // Nobody knows when a program ends its inhibition.
    const qint64 until = m_inhibitions.isEmpty() ? m_doNotDisturb.nextChange(now).value_or(0) : 0;
    return TavoAttentionDoNotDisturb()
        .setOn(m_doNotDisturb.isOn(now))
        .setUntil(until)
        .setChosen(m_doNotDisturb.choice(now).has_value())
        .setInhibitions(inhibitions);
}

void QuietTimes::on_alarm_rang()
{
    const Entrance::Hold held = m_entrance.hold();
    update();
}

void QuietTimes::update()
{
    const qint64 now = AlarmClock::now();
    m_doNotDisturb.setInhibited(!m_inhibitions.isEmpty());
    const bool isOn = m_doNotDisturb.isOn(now);
    m_alarm.set(m_doNotDisturb.nextChange(now));
    m_node->setValue(TavoValue().setAttentionDoNotDisturb(state(now)));
    if (std::exchange(m_isOn, isOn) != isOn) {
        LOG4CPLUS_INFO(logger, "Do-not-disturb is " << (isOn ? "on" : "off"));
        if (!isOn) {
            const auto missed = std::exchange(m_missed, {});
            m_programs.clear();
            save();
            Q_EMIT ended(missed);
        }
    }
}
