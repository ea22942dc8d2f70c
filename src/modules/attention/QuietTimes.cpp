// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "QuietTimes.h"

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

CMError error(const TrString &message)
{
    return {QStringLiteral("Attention"), message};
}
} // namespace

QuietTimes::QuietTimes(CMNodes *nodes)
    : m_node(CMValueNode::create(nodes, TavoAttentionDoNotDisturbPath()))
{
    CMActivateNode::create(nodes, TavoAttentionSetDoNotDisturbPath())
        ->setInvoke(this, &QuietTimes::on_set_activated, Qt::QueuedConnection);
    tavoConnect(&m_alarm, &AlarmClock::rang, this, &QuietTimes::update);
    update();
}

void QuietTimes::setSettings(const DoNotDisturbSettings &settings)
{
    m_doNotDisturb.setSettings(settings);
    update();
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
    m_doNotDisturb.choose({chosen.on(), chosen.until()}, now);
    update();
    request.reply().setValue(QVariant());
}

void QuietTimes::update()
{
    const qint64 now = AlarmClock::now();
    const bool isOn = m_doNotDisturb.isOn(now);
    const auto next = m_doNotDisturb.nextChange(now);
    m_alarm.set(next);
    m_node->setValue(TavoValue().setAttentionDoNotDisturb(
        TavoAttentionDoNotDisturb()
            .setOn(isOn)
            .setUntil(next.value_or(0))
            .setChosen(m_doNotDisturb.choice(now).has_value())));
    if (std::exchange(m_isOn, isOn) != isOn) {
        LOG4CPLUS_INFO(logger, "Do-not-disturb is " << (isOn ? "on" : "off"));
        if (!isOn) {
            Q_EMIT ended();
        }
    }
}
