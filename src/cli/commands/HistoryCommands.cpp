// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/HistoryCommands.h"

#include "base/MissedState.h"
#include "base/Printable.h"

#include <QDateTime>

#include <algorithm>

namespace {
/// As docs/attention.md names the states.
QString stateText(TavoAttentionState::Enum state)
{
    switch (state) {
    case TavoAttentionState::ActedOn:
        return QStringLiteral("acted on");
    case TavoAttentionState::LeftOpen:
        return QStringLiteral("left open");
    default:
        return TavoAttentionState::toString(state).toLower();
    }
}
} // namespace

void HistoryCommand::start()
{
    read(TavoAttentionQuery().setMissed(options().missed), [this](const PastNotifications &past) {
        if (options().json) {
            print(toHash(past), {});
        } else {
            printLines(past);
            if (past.records.isEmpty() && !past.isCut) {
                terminal().printNote(QStringLiteral("No notifications."));
            }
        }
        finish(ExitCode::Ok);
    });
}

void HistoryCommand::read(TavoAttentionQuery query,
                          const std::function<void(const PastNotifications &)> &use)
{
    query.setSearch(QString::fromStdString(options().search))
        .setSource(QString::fromStdString(options().source));
    readHistory(client(), this, query, options().limit,
                [this, use](const PastNotifications &past, const CMError &error) {
                    if (error.isError()) {
                        fail(error, TavoAttentionHistoryPath());
                    } else {
                        use(past);
                    }
                });
}

QVariantHash HistoryCommand::toHash(const PastNotifications &past)
{
    QVariantList list;
    for (const TavoAttentionRecord &record : past.records) {
        QVariantHash fields = record.fields();
        fields.insert(QStringLiteral("state"), stateText(record.state()));
        list.append(fields);
    }
    return {{QStringLiteral("notifications"), list}, {QStringLiteral("more"), past.isCut}};
}

void HistoryCommand::printLines(const PastNotifications &past)
{
    for (const TavoAttentionRecord &record : past.records) {
        terminal().print(lineOf(record));
    }
    // Readers of a pipe would take a note for a notification.
    if (past.isCut) {
        terminal().printNote(QStringLiteral("There are more: see --limit."));
    }
}

QString HistoryCommand::lineOf(const TavoAttentionRecord &record)
{
    const bool isTerminal = terminal().isTerminal();
    const auto cell = [isTerminal](const QString &text) {
        constexpr int maxSize = 200; // a client's text may fill many screens
        return printable(isTerminal ? shortened(text, maxSize) : text);
    };
    const QString time = QDateTime::fromMSecsSinceEpoch(record.time())
                             .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const QString state = stateText(record.state());
    const QString sender =
        cell(record.application().isEmpty() ? record.source() : record.application());
    const QString title = cell(record.title());
    const QString text = cell(record.text());
    if (!isTerminal) {
        return QStringList{time, state, sender, title, text}.join(QLatin1Char('\t'));
    }
    constexpr int stateWidth = 9;
    const auto style = isMissed(record.state()) ? Terminal::Style::Notice : Terminal::Style::Plain;
    return QStringList{terminal().styled(time, Terminal::Style::Faint),
                       terminal().styled(state.leftJustified(stateWidth), style), sender,
                       terminal().styled(title, Terminal::Style::Bold), text}
        .join(QStringLiteral("  "));
}

void MissedCommand::start()
{
    const CMPath path = TavoAttentionMissedPath();
    onAnswer<QVariant>(client().getValue(path), path, [this](const QVariant &value) {
        const int count = TavoValue(value.toHash()).int_();
        read(TavoAttentionQuery().setMissed(true), [this, count](const PastNotifications &past) {
            // The value follows the history a moment later.
            const int listed = past.records.size();
            report(past, past.isCut ? std::max(count, listed + 1) : listed);
        });
    });
}

void MissedCommand::report(const PastNotifications &past, int count)
{
    if (options().json) {
        QVariantHash fields = toHash(past);
        fields.insert(QStringLiteral("count"), count);
        print(fields, {});
    } else {
        printLines(past);
        terminal().printNote(count == 0 ? QStringLiteral("Nothing was missed.")
                                        : QStringLiteral("%1 missed.").arg(count));
    }
    if (options().seen && !past.records.isEmpty()) {
        markSeen(past);
    } else {
        finish(ExitCode::Ok);
    }
}

void MissedCommand::markSeen(const PastNotifications &past)
{
    // Those that have come since stay as they are: nobody has seen them here.
    const auto listed = TavoAttentionQuery().setBefore(past.records.first().number() + 1);
    const CMPath path = TavoAttentionMarkSeenPath();
    onAnswer<QVariant>(client().call(path, TavoValue().setAttentionQuery(listed)), path,
                       [this](const QVariant &) { finish(ExitCode::Ok); });
}
