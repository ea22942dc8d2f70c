// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Feeder.h"

#include "SoundMenu.h"

#include <QFile>
#include <QTimer>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace {
constexpr int maxHoldMs = 60;
}

Feeder::Feeder(Situation &situation, Dice &dice, QObject *parent)
    : QObject(parent)
    , m_situation(situation)
    , m_dice(dice)
{
    QFile file(situation.sounds + QStringLiteral("/music.wav"));
    if (file.open(QIODevice::ReadOnly)) {
        m_wave = file.readAll();
    }
}

Feeder::~Feeder()
{
    rest();
}

void Feeder::feed(const QString &id)
{
    const int mark = id.indexOf(QLatin1String("-fifo"));
    if (mark < 0) {
        return;
    }
    const int number = id.mid(mark + 5).toInt();
    const int descriptor =
        ::open(QFile::encodeName(SoundMenu::fifo(m_situation, number)).constData(),
               O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return; // the reader has gone
    }
    const int size = m_dice.percent(30) ? m_wave.size() : m_dice.number(0, m_wave.size());
    [[maybe_unused]] const auto written =
        ::write(descriptor, m_wave.constData(), std::size_t(size));
    m_situation.ledger.count(QStringLiteral("FIFO writers that went"));
    m_open.push_back(descriptor);
    QTimer::singleShot(m_dice.number(0, maxHoldMs), this, [this, descriptor] {
        const auto place = std::find(m_open.begin(), m_open.end(), descriptor);
        if (place != m_open.end()) {
            ::close(descriptor);
            m_open.erase(place);
        }
    });
}

void Feeder::rest()
{
    for (const int descriptor : m_open) {
        ::close(descriptor);
    }
    m_open.clear();
}
