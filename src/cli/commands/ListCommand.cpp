// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/ListCommand.h"

#include "base/Printable.h"

void ListCommand::start()
{
    constexpr int defaultCount = 100;
    const int max = options().count < 0 ? defaultCount : options().count;
    readMessages(client(), this, max, [this](const ShownMessages &messages, const CMError &error) {
        if (error.isError()) {
            fail(error, TavoNotificationDisplayQueuePath());
            return;
        }
        if (options().json) {
            print(QVariantHash{{QStringLiteral("messages"), messages.toList()},
                               {QStringLiteral("more"), messages.isCut}},
                  {});
        } else {
            printLines(messages);
        }
        finish(ExitCode::Ok);
    });
}

void ListCommand::printLines(const ShownMessages &messages)
{
    for (int i = 0; i < messages.messages.size(); ++i) {
        terminal().print(lineOf(messages.messages[i], i));
    }
    // Readers of a pipe would take a note for a message.
    if (messages.isCut) {
        terminal().printNote(QStringLiteral("There are more: see --count."));
    } else if (messages.messages.isEmpty()) {
        terminal().printNote(QStringLiteral("No messages."));
    }
}

QString ListCommand::lineOf(const ShownMessage &message, int index)
{
    const QString place = index == 0 ? QStringLiteral("shown") : QString::number(index);
    const bool isTerminal = terminal().isTerminal();
    const auto cell = [isTerminal](const QString &text) {
        constexpr int maxSize = 200; // a client's text may fill many screens
        return printable(isTerminal ? shortened(text, maxSize) : text);
    };
    const QString path = cell(message.path.toString());
    const QString title = cell(message.title);
    const QString text = cell(message.text);
    if (!isTerminal) {
        return QStringList{place, path, title, text}.join(QLatin1Char('\t'));
    }
    constexpr int width = 5;
    const auto style = index == 0 ? Terminal::Style::Good : Terminal::Style::Plain;
    QStringList cells{terminal().styled(place.rightJustified(width), style),
                      terminal().styled(path, Terminal::Style::Faint),
                      terminal().styled(title, Terminal::Style::Bold), text};
    if (message.remaining) {
        constexpr double msPerSecond = 1000;
        cells.append(terminal().styled(
            QStringLiteral("%1 s left").arg(*message.remaining / msPerSecond, 0, 'f', 1),
            Terminal::Style::Faint));
    }
    return cells.join(QStringLiteral("  "));
}
