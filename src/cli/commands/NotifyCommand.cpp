// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/NotifyCommand.h"

#include "base/Printable.h"
#include "cli/commands/NotifyItem.h"
#include <core/base/connect.h>
#include <core/base/uuid.h>

namespace {
/// Such as "Shown, not read aloud". Whether its sound is played is not known yet.
QString whatBecameOf(const TavoAttentionItem &item, const TavoAttentionOutcome &outcome)
{
    QStringList parts;
    if (!item.title().isEmpty() || !item.text().isEmpty()) {
        parts.append(outcome.shown() ? QStringLiteral("shown") : QStringLiteral("not shown"));
    }
    if (!item.speech().isEmpty()) {
        parts.append(outcome.sounding() ? QStringLiteral("read aloud")
                                        : QStringLiteral("not read aloud"));
    }
    const QString text = parts.join(QStringLiteral(", "));
    return text.left(1).toUpper() + text.mid(1);
}
} // namespace

NotifyCommand::NotifyCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : Command(options, client, terminal)
    , m_clock(terminal)
{
}

void NotifyCommand::start()
{
    const auto read = notifyItem(options());
    if (const auto *failure = std::get_if<ExitFailure>(&read)) {
        fail(failure->code, failure->reason);
        return;
    }
    m_item = std::get<TavoAttentionItem>(read);
    // The end may be reported before the module's reply, which has the id.
    if (m_item.id().isEmpty()) {
        m_item.setId(QStringLiteral("tavo-") + tavoGenerateUuid());
    }
    if (!options().wait) {
        send();
        return;
    }
    tavoConnect(&client(), &TavoClient::availableChanged, this,
                &NotifyCommand::on_client_availableChanged);
    tavoConnect(&client(), &TavoClient::valueChanged, this, &NotifyCommand::on_client_valueChanged);
    tavoConnect(&client(), &TavoClient::changesDropped, this,
                &NotifyCommand::on_client_changesDropped);
    tavoConnect(&client(), &TavoClient::subscriptionFailed, this,
                &NotifyCommand::on_client_subscriptionFailed);
    // While there is no host, a subscription waits for one. The host must have it before the request.
    onAnswer<QString>(client().version(), {}, [this](const QString &) {
        client().subscribe(TavoAttentionEndedPath(), TavoClient::Change::Value);
        send();
    });
}

void NotifyCommand::send()
{
    const CMPath path = TavoAttentionNotifyPath();
    onAnswer<QVariant>(client().call(path, TavoValue().setAttentionItem(m_item)), path,
                       [this](const QVariant &value) {
                           on_notify_finished(TavoValue(value.toHash()).attentionOutcome());
                       });
}

void NotifyCommand::on_notify_finished(const TavoAttentionOutcome &outcome)
{
    m_isOpen = true;
    printOutcome(outcome);
    if (!options().wait) {
        finish(ExitCode::Ok);
        return;
    }
    m_clock.show(QStringLiteral("%1 is open").arg(m_item.id()));
    if (m_early) {
        handle(*m_early);
    }
}

void NotifyCommand::printOutcome(const TavoAttentionOutcome &outcome)
{
    if (options().json) {
        QVariantHash fields = outcome.fields();
        fields.insert(QStringLiteral("event"), QStringLiteral("opened"));
        terminal().printJson(toJson(fields, JsonForm::Line));
        return;
    }
    terminal().print(printable(m_item.id()));
    if (outcome.reason().isEmpty()) {
        return;
    }
    QString note =
        whatBecameOf(m_item, outcome) + QStringLiteral(": ") + printable(outcome.reason());
    for (int index = 0; index < outcome.rules().size(); ++index) {
        note += (index == 0 ? QStringLiteral("; rules: ") : QStringLiteral(", ")) +
                printable(outcome.rules().at(index));
    }
    terminal().printNote(note);
}

void NotifyCommand::on_client_valueChanged(const CMPath &path, const QVariant &value)
{
    const auto ended = TavoValue(value.toHash()).attentionEnded();
    if (path != TavoAttentionEndedPath() || ended.id() != m_item.id()) {
        return;
    }
    if (m_isOpen) {
        handle(ended);
    } else {
        m_early = ended;
    }
}

void NotifyCommand::handle(const TavoAttentionEnded &ended)
{
    switch (ended.end()) {
    case TavoAttentionEnd::Expired:
        printEnd("expired", {});
        finish(ExitCode::Ok);
        break;
    case TavoAttentionEnd::ActedOn:
        printEnd("action", ended.action());
        finish(ExitCode::Ok);
        break;
    case TavoAttentionEnd::Closed:
        printEnd("closed", {});
        m_signal != 0 ? finishBySignal(m_signal) : finish(ExitCode::Cancelled);
        break;
    case TavoAttentionEnd::Dismissed:
        printEnd("dismissed", {});
        finish(ExitCode::Dismissed);
        break;
    case TavoAttentionEnd::Silenced:
        printEnd("silenced", {});
        finish(ExitCode::Silenced);
        break;
    case TavoAttentionEnd::Failed:
        printEnd("failed", {});
        fail(ExitCode::Failed,
             QStringLiteral("the notification %1 could be neither shown nor played: the host's log "
                            "says why, and tavo doctor may know")
                 .arg(m_item.id()));
        break;
    case TavoAttentionEnd::Unknown:
        printEnd("unknown", {});
        finish(ExitCode::EndUnknown);
        break;
    }
}

void NotifyCommand::printEnd(const char *event, const QString &action)
{
    const QString name = QString::fromLatin1(event);
    if (!options().json) {
        terminal().print(action.isEmpty() ? name : name + QLatin1Char(' ') + printable(action));
        return;
    }
    QVariantHash fields{{QStringLiteral("event"), name}, {QStringLiteral("id"), m_item.id()}};
    if (!action.isEmpty()) {
        fields.insert(QStringLiteral("action"), action);
    }
    terminal().printJson(toJson(fields, JsonForm::Line));
}

void NotifyCommand::on_client_availableChanged(bool available)
{
    if (!available && m_isOpen) {
        fail(
            ExitCode::EndUnknown,
            QStringLiteral("the host went away, and the notification %1 with it").arg(m_item.id()));
    }
}

void NotifyCommand::on_client_changesDropped()
{
    fail(ExitCode::EndUnknown,
         QStringLiteral("the host left out reports, and the end of %1 may be among them")
             .arg(m_item.id()));
}

void NotifyCommand::on_client_subscriptionFailed(const CMPath &path, const CMError &error)
{
    fail(error, path);
}

void NotifyCommand::interrupt(int signal)
{
    m_signal = signal;
    if (!m_isOpen) {
        finishBySignal(signal);
        return;
    }
    const CMPath path = TavoAttentionClosePath();
    client()
        .call(path, TavoValue().setString_(m_item.id()))
        .onFinished(this, [this](const CMReply<QVariant> &answer) {
            if (answer.error().isError()) {
                finishBySignal(m_signal);
            }
        });
}
