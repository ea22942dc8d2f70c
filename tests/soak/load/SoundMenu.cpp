// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundMenu.h"

#include <QDir>
#include <QFile>

#include <limits>

namespace {
using Item = TavoNotificationPlayerItem;
using Type = TavoNotificationPlayerItemType;

// In percent.
constexpr int badShare = 15;
constexpr int loopShare = 8;
constexpr int httpShare = 12;
constexpr int strangerShare = 3;
constexpr int fifoShare = 40;

QStringList filesIn(const QString &folder)
{
    QStringList names;
    for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::NoDotDot)) {
        if (name != QLatin1String(".")) {
            names.append(folder + QLatin1Char('/') + name);
        }
    }
    return names;
}

QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

SoundMenu::SoundMenu(const Situation &situation, Dice &dice)
    : m_situation(situation)
    , m_dice(dice)
    , m_good(filesIn(situation.sounds + QStringLiteral("/good")))
    , m_bad(filesIn(situation.sounds + QStringLiteral("/bad")) +
            QStringList{situation.sounds + QStringLiteral("/missing.wav"), QString(),
                        QStringLiteral("ftp://127.0.0.1/sound.wav")})
{
}

QString SoundMenu::fifo(const Situation &situation, int number)
{
    return QStringLiteral("%1/fifo%2").arg(situation.sounds).arg(number);
}

SoundMenu::Choice SoundMenu::choose()
{
    Choice choice;
    const int kind = m_dice.number(0, 99);
    if (kind < strangerShare) {
        choice.item = stranger();
    } else if (kind < 35) {
        choice.item = uri();
    } else if (kind < 55) {
        choice.item = data();
    } else if (kind < 80) {
        choice = stream();
    } else {
        choice.item.setType(Type::Fake);
    }
    if (m_dice.percent(loopShare)) {
        choice.item.setLoop(true);
    }
    return choice;
}

std::vector<TavoNotificationPlayerItem> SoundMenu::oneOfEach()
{
    std::vector<TavoNotificationPlayerItem> items;
    for (const QString &name : m_good + m_bad + QStringList{httpSound()}) {
        items.push_back(Item().setType(Type::Uri).setContent(name));
    }
    items.push_back(data());
    items.push_back(Item()
                        .setType(Type::Stream)
                        .setContent(m_good.first())
                        .setContentStreamFormat(QStringLiteral("audio/wav")));
    items.push_back(Item()
                        .setType(Type::Stream)
                        .setContent(m_good.first())
                        .setContentStreamFormat(QStringLiteral("audio/L16;rate=48000")));
    items.push_back(Item().setType(Type::Fake));
    return items;
}

QString SoundMenu::httpSound() const
{
    return m_situation.http.isEmpty()
               ? QString()
               : m_situation.http + QLatin1Char('/') + m_good.first().section(QLatin1Char('/'), -2);
}

QString SoundMenu::file(bool good)
{
    return m_dice.oneOf(good ? m_good : m_bad);
}

TavoNotificationPlayerItem SoundMenu::uri()
{
    QString name = file(!m_dice.percent(badShare));
    if (!m_situation.http.isEmpty() && m_dice.percent(httpShare)) {
        name = m_situation.http + QLatin1Char('/') + name.section(QLatin1Char('/'), -2);
    } else if (m_dice.percent(30)) {
        name.prepend(QStringLiteral("file://"));
    }
    return Item().setType(Type::Uri).setContent(name);
}

TavoNotificationPlayerItem SoundMenu::data()
{
    const QByteArray sound = contentOf(file(!m_dice.percent(badShare))).toBase64();
    const int kept = m_dice.percent(5) ? m_dice.number(0, sound.size()) : sound.size();
    return Item().setType(Type::Data).setContent(QString::fromLatin1(sound.left(kept)));
}

SoundMenu::Choice SoundMenu::stream()
{
    static const QStringList formats{
        QStringLiteral("audio/L16;rate=8000;channels=1"), QStringLiteral("audio/L16;rate=48000"),
        QStringLiteral("audio/wav"), QStringLiteral("audio/L16;rate=44100;channels=2"),
        QStringLiteral("nonsense")};
    Choice choice;
    choice.item.setType(Type::Stream).setContentStreamFormat(m_dice.oneOf(formats));
    if (m_dice.percent(fifoShare)) {
        choice.fifo = m_dice.number(0, fifoCount - 1);
        choice.item.setContent(fifo(m_situation, choice.fifo));
    } else {
        choice.item.setContent(file(!m_dice.percent(badShare)));
    }
    return choice;
}

TavoNotificationPlayerItem SoundMenu::stranger()
{
    static const std::vector<int> types{
        -1, 4, 5, 99, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    return Item().setType(Type::Enum(m_dice.oneOf(types)));
}
