// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/ListCommand.h"

#include "cli/output/ValueText.h"

void ListCommand::start()
{
    constexpr int usualCount = 100;
    const int most = options().count < 0 ? usualCount : options().count;
    readMessages(client(), this, most, [this](const ShownMessages &messages, const CMError &error) {
        if (error.isError()) {
            fail(error, TavoNotificationDisplayQueuePath());
            return;
        }
        print(QVariantHash{{QStringLiteral("messages"), messages.toList()},
                           {QStringLiteral("more"), messages.isCut}},
              textOf(messages));
        finish(ExitCode::Ok);
    });
}

QString ListCommand::textOf(const ShownMessages &messages)
{
    if (messages.messages.isEmpty() && !messages.isCut) {
        return QStringLiteral("No messages.");
    }
    QStringList lines;
    for (int i = 0; i < messages.messages.size(); ++i) {
        const ShownMessage &message = messages.messages[i];
        const QString place = i == 0 ? QStringLiteral("shown") : QStringLiteral("%1").arg(i, 5);
        lines.append(
            QStringLiteral("%1  %2  %3  %4")
                .arg(terminal().styled(place,
                                       i == 0 ? Terminal::Style::Good : Terminal::Style::Plain),
                     terminal().styled(oneLine(message.path.toString()), Terminal::Style::Faint),
                     terminal().styled(oneLine(message.title), Terminal::Style::Bold),
                     oneLine(message.text)));
    }
    if (messages.isCut) {
        lines.append(QStringLiteral("There are more: see --count."));
    }
    return lines.join(QLatin1Char('\n'));
}
