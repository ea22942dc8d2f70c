// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/StatusCommand.h"

#include "base/Printable.h"
#include "cli/doctor/RunningHost.h"

namespace {
/// The count of waiting messages stops here.
constexpr int maxMessages = 20;

/// A client's text for a line of the overview.
QString brief(const QString &text)
{
    constexpr int maxSize = 200;
    return printable(shortened(text, maxSize));
}

QString texts(const TavoList<QString> &list)
{
    QStringList result;
    for (int i = 0; i < list.size(); ++i) {
        result.append(brief(list.at(i)));
    }
    return result.join(QStringLiteral(", "));
}

QVariant resourcesOf(const TavoPowerManagerState &state)
{
    QVariantHash resources;
    for (int i = 0; i < state.resources().size(); ++i) {
        const TavoPowerManagerResourceHolders holders = state.resources().at(i);
        resources.insert(TavoPowerManagerResources::toString(holders.resource()),
                         holders.holders().elements());
    }
    return resources;
}

QString notThere(const char *module)
{
    return QStringLiteral("unknown: the host has no module %1").arg(QLatin1String(module));
}
} // namespace

void StatusCommand::start()
{
    // Counts one more than the requests, so that it can't be 0 before all are sent.
    m_pending = 1;
    read(TavoNotificationPlayerIsPlayingPath(),
         [this](const TavoValue &value) { m_sounds = value.bool_(); });
    read(TavoPlayerMainAudioStatePath(),
         [this](const TavoValue &value) { m_audio = value.mainAudioState(); });
    read(TavoPowerManagerStatePath(),
         [this](const TavoValue &value) { m_power = value.powerManagerState(); });
    ++m_pending;
    client().version().onFinished(this, [this](const CMReply<QString> &answer) {
        if (answer.error().isError()) {
            fail(answer.error());
        }
        m_version = answer.value();
        answered();
    });
    ++m_pending;
    readMessages(client(), this, maxMessages,
                 [this](const ShownMessages &messages, const CMError &error) {
                     if (!error.isError()) {
                         m_messages = messages;
                     } else if (error.name() != CMErrors::noSuchNode()) {
                         fail(error);
                     }
                     answered();
                 });
    ++m_pending;
    readAttention(client(), this, [this](const AttentionState &state, const CMError &error) {
        if (!error.isError()) {
            m_attention = state;
        } else if (error.name() != CMErrors::noSuchNode()) {
            fail(error);
        }
        answered();
    });
    answered();
}

void StatusCommand::read(const CMPath &path, std::function<void(const TavoValue &)> use)
{
    ++m_pending;
    client().getValue(path).onFinished(this, [this, use](const CMReply<QVariant> &answer) {
        if (!answer.error().isError()) {
            use(TavoValue(answer.value().toHash()));
        } else if (answer.error().name() != CMErrors::noSuchNode()) {
            fail(answer.error());
        }
        answered();
    });
}

void StatusCommand::answered()
{
    if (--m_pending == 0 && !isFinished()) {
        print(toHash(), toText());
        finish(ExitCode::Ok);
    }
}

QVariantHash StatusCommand::toHash() const
{
    QVariantHash hash{{QStringLiteral("sounding"), m_sounds ? QVariant(*m_sounds) : QVariant()}};
    hash.insert(QStringLiteral("version"), m_version);
    hash.insert(QStringLiteral("audio"), m_audio ? m_audio->__variant() : QVariant());
    if (m_power) {
        hash.insert(QStringLiteral("power"),
                    QVariantHash{{QStringLiteral("standby"), m_power->standby()},
                                 {QStringLiteral("resources"), resourcesOf(*m_power)}});
    } else {
        hash.insert(QStringLiteral("power"), QVariant());
    }
    if (m_messages) {
        const QVariantList all = m_messages->toList();
        hash.insert(
            QStringLiteral("display"),
            QVariantHash{{QStringLiteral("shown"), all.isEmpty() ? QVariant() : all.first()},
                         {QStringLiteral("waiting"), all.mid(1)},
                         {QStringLiteral("more"), m_messages->isCut}});
    } else {
        hash.insert(QStringLiteral("display"), QVariant());
    }
    hash.insert(QStringLiteral("attention"),
                m_attention ? QVariant(m_attention->toHash()) : QVariant());
    return hash;
}

QString StatusCommand::toText()
{
    QStringList lines{line("Sound", soundText()), line("Main audio", audioText()),
                      line("Display", displayText()), line("Attention", attentionText()),
                      line("Power", powerText())};
    if (isOutdated(m_version)) {
        lines.append(line(
            "Host", terminal().styled(brief(outdatedText(m_version)), Terminal::Style::Notice)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString StatusCommand::line(const char *what, const QString &text)
{
    constexpr int width = 12;
    const QString head = QString::fromLatin1(what).leftJustified(width);
    return terminal().styled(head, Terminal::Style::Bold) + text;
}

QString StatusCommand::soundText()
{
    if (!m_sounds) {
        return notThere("notifications");
    }
    return *m_sounds
               ? terminal().styled(QStringLiteral("a notification sounds"), Terminal::Style::Good)
               : QStringLiteral("no notification sounds");
}

QString StatusCommand::audioText()
{
    if (!m_audio) {
        return notThere("player");
    }
    constexpr int percent = 100;
    QString text = m_audio->playing() ? QStringLiteral("plays %1").arg(brief(m_audio->source()))
                                      : QStringLiteral("silent");
    text += QStringLiteral(", volume %1 %").arg(qRound(m_audio->volume() * percent));
    text +=
        m_audio->ducked()
            ? terminal().styled(QStringLiteral(", ducked for %1").arg(texts(m_audio->requesters())),
                                Terminal::Style::Notice)
            : QStringLiteral(", not ducked");
    if (!m_audio->error().isEmpty()) {
        text +=
            terminal().styled(QStringLiteral("; ") + brief(m_audio->error()), Terminal::Style::Bad);
    }
    return text;
}

QString StatusCommand::displayText()
{
    if (!m_messages) {
        return notThere("notifications");
    }
    if (m_messages->messages.isEmpty()) {
        return QStringLiteral("empty");
    }
    const ShownMessage &shown = m_messages->messages.first();
    const int waiting = m_messages->messages.size() - 1;
    QString text = QStringLiteral("shows ");
    text += terminal().styled(brief(shown.title), Terminal::Style::Good);
    text += shown.text.isEmpty() ? QString() : QStringLiteral(": ") + brief(shown.text);
    text += QStringLiteral(" (%1)").arg(brief(shown.path.toString()));
    return text + QStringLiteral(", %1%2 waiting")
                      .arg(m_messages->isCut ? QStringLiteral("at least ") : QString())
                      .arg(waiting + int(m_messages->isCut));
}

QString StatusCommand::attentionText()
{
    if (!m_attention) {
        return notThere("attention");
    }
    const auto bad = [this](const QString &text) {
        return terminal().styled(text, Terminal::Style::Bad);
    };
    const TavoAttentionRules &rules = m_attention->rules;
    const TavoAttentionHistory &history = m_attention->history;
    const QString quiet =
        QStringLiteral("do-not-disturb ") + doNotDisturbText(m_attention->doNotDisturb);
    QStringList parts{
        m_attention->doNotDisturb.on() ? terminal().styled(quiet, Terminal::Style::Notice) : quiet,
        QStringLiteral("missed: %1").arg(m_attention->missed),
        rules.isRead() ? QStringLiteral("rules: %1").arg(rules.rules().size())
                       : QStringLiteral("no settings")};
    if (!rules.error().isEmpty()) {
        parts.append(bad(QStringLiteral("wrong settings: ") + brief(rules.error())));
    }
    if (!history.kept()) {
        parts.append(bad(QStringLiteral("history: ") + brief(history.reason())));
    }
    return parts.join(QStringLiteral(", "));
}

QString StatusCommand::powerText()
{
    if (!m_power) {
        return notThere("powermanager");
    }
    QString text = m_power->standby()
                       ? terminal().styled(QStringLiteral("standby"), Terminal::Style::Notice)
                       : QStringLiteral("on");
    const auto resources = m_power->resources();
    for (int i = 0; i < resources.size(); ++i) {
        text += QStringLiteral(", %1 held by %2")
                    .arg(TavoPowerManagerResources::toString(resources.at(i).resource()),
                         texts(resources.at(i).holders()));
    }
    return resources.isEmpty() ? text + QStringLiteral(", no resource held") : text;
}
