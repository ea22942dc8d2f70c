// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/RulesCommand.h"

#include "base/Printable.h"
#include "cli/commands/NotifyItem.h"

#include <QFile>

#include <algorithm>
#include <attention/MissingFiles.h>
#include <stdexcept>

namespace {
QString countText(int rules)
{
    return rules == 1 ? QStringLiteral("1 rule") : QStringLiteral("%1 rules").arg(rules);
}

QString messageText(const TavoAttentionTrial &trial)
{
    if (!trial.shown()) {
        return QStringLiteral("not shown");
    }
    constexpr double msPerSecond = 1000;
    return trial.timeout() == 0
               ? QStringLiteral("shown until it is closed")
               : QStringLiteral("shown for %1 s").arg(trial.timeout() / msPerSecond);
}
} // namespace

void RulesCommand::start()
{
    if (options().rulesAction == "check") {
        check();
    } else if (options().rulesAction == "test") {
        test();
    } else {
        list();
    }
}

void RulesCommand::list()
{
    const CMPath path = TavoAttentionRulesPath();
    onAnswer<QVariant>(client().getValue(path), path, [this](const QVariant &value) {
        const auto rules = TavoValue(value.toHash()).attentionRules();
        if (options().json) {
            print(rules.fields(), {});
        } else {
            printRules(rules);
        }
        if (rules.error().isEmpty()) {
            finish(ExitCode::Ok);
        } else {
            fail(ExitCode::Refused,
                 rules.error() + (rules.isRead()
                                      ? QStringLiteral(". The previous rules stay in use")
                                      : QStringLiteral(". There are no rules until it is mended")));
        }
    });
}

void RulesCommand::printRules(const TavoAttentionRules &rules)
{
    for (int index = 0; index < rules.rules().size(); ++index) {
        const TavoAttentionRule rule = rules.rules().at(index);
        const QString name = printable(rule.name());
        const QString count = QString::number(rule.count());
        constexpr int width = 6;
        terminal().print(terminal().isTerminal()
                             ? count.rightJustified(width) + QStringLiteral("  ") + name
                             : count + QLatin1Char('\t') + name);
    }
    const QString file = printable(rules.file());
    if (rules.isRead()) {
        terminal().printNote(
            QStringLiteral("%1, from %2").arg(countText(rules.rules().size()), file));
    } else if (rules.error().isEmpty()) {
        terminal().printNote(QStringLiteral("No rules: there is no %1").arg(file));
    }
}

void RulesCommand::check()
{
    const bool isNamed = !options().title.empty();
    const QString name = isNamed ? QFile::decodeName(QByteArray::fromStdString(options().title))
                                 : AttentionSettings::defaultFile();
    QFile file(name);
    if (!isNamed && !file.exists()) {
        print(QVariantHash{{QStringLiteral("rules"), 0}},
              QStringLiteral("No settings, and so no rules: none of these files is there: %1")
                  .arg(AttentionSettings::defaultFiles().join(QStringLiteral(", "))));
        finish(ExitCode::Ok);
        return;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        fail(ExitCode::NoInput,
             QStringLiteral("%1 can't be read: %2").arg(name, file.errorString()));
        return;
    }
    const QByteArray json = file.readAll();
    try {
        check(AttentionSettings::fromJson(json, name), json, name);
    } catch (const std::runtime_error &error) {
        fail(ExitCode::Refused, QString::fromUtf8(error.what()));
    }
}

void RulesCommand::check(const AttentionSettings &settings, const QByteArray &json,
                         const QString &file)
{
    const QStringList missing = missingFiles(settings, json, file);
    for (const QString &each : missing) {
        terminal().printError(each);
    }
    if (!missing.isEmpty()) {
        finish(ExitCode::Refused);
        return;
    }
    const int count = int(settings.rules.list().size());
    print(QVariantHash{{QStringLiteral("file"), file}, {QStringLiteral("rules"), count}},
          QStringLiteral("%1: good, rules: %2").arg(printable(file)).arg(count));
    finish(ExitCode::Ok);
}

void RulesCommand::test()
{
    if (options().title.empty()) {
        fail(ExitCode::Usage, QStringLiteral("rules test needs the title of a notification"));
        return;
    }
    const auto item = notifyItem(options());
    if (const auto *failure = std::get_if<ExitFailure>(&item)) {
        fail(failure->code, failure->reason);
        return;
    }
    const CMPath path = TavoAttentionTryPath();
    const auto request = TavoValue().setAttentionItem(std::get<TavoAttentionItem>(item));
    onAnswer<QVariant>(client().call(path, request), path, [this](const QVariant &value) {
        const auto trial = TavoValue(value.toHash()).attentionTrial();
        if (options().json) {
            print(trial.fields(), {});
        } else {
            printTrial(trial);
        }
        finish(ExitCode::Ok);
    });
}

void RulesCommand::printTrial(const TavoAttentionTrial &trial)
{
    const auto verdicts = trial.verdicts();
    int nameWidth = 0;
    for (int index = 0; index < verdicts.size(); ++index) {
        constexpr int maxWidth = 40;
        const int width = printable(verdicts.at(index).rule()).size();
        nameWidth = std::max(nameWidth, std::min(width, maxWidth));
    }
    for (int index = 0; index < verdicts.size(); ++index) {
        printVerdict(verdicts.at(index), nameWidth);
    }
    printOutcome("Message", messageText(trial));
    printOutcome("Sound", trial.sounding() ? QStringLiteral("played, if it has one")
                                           : QStringLiteral("not played"));
    printOutcome("Speech",
                 trial.spoken() ? QStringLiteral("read aloud") : QStringLiteral("not read aloud"));
    printOutcome("Priority", TavoNotificationItemPriority::toString(trial.priority()));
    if (!trial.reason().isEmpty()) {
        printOutcome("Why", printable(trial.reason()));
    }
}

void RulesCommand::printVerdict(const TavoAttentionVerdict &verdict, int nameWidth)
{
    const QString name = printable(verdict.rule());
    const QString reason = printable(verdict.reason());
    const QString state = verdict.applies() ? QStringLiteral("applies") : QStringLiteral("no");
    if (!terminal().isTerminal()) {
        terminal().print(QStringList{state, name, reason}.join(QLatin1Char('\t')));
        return;
    }
    constexpr int width = 7;
    const auto style = verdict.applies() ? Terminal::Style::Good : Terminal::Style::Faint;
    terminal().print(terminal().styled(state.leftJustified(width), style) + QStringLiteral("  ") +
                     terminal().styled(name.leftJustified(nameWidth), Terminal::Style::Bold) +
                     QStringLiteral("  ") + reason);
}

void RulesCommand::printOutcome(const char *what, const QString &text)
{
    constexpr int width = 10;
    const QString name = QString::fromLatin1(what);
    terminal().print(terminal().isTerminal() ? name.leftJustified(width) + text
                                             : name + QLatin1Char('\t') + text);
}
