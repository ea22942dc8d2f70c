// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/ShowCommand.h"

#include "cli/Priority.h"
#include <core/base/connect.h>

ShowCommand::ShowCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : Command(options, client, terminal)
    , m_messages(&client)
    , m_clock(terminal)
{
    tavoConnect(&client, &TavoClient::availableChanged, this,
                &ShowCommand::on_client_availableChanged);
    tavoConnect(&m_messages, &TavoMessages::closed, this, &ShowCommand::on_messages_closed);
}

void ShowCommand::start()
{
    TavoMessage message;
    message.title = QString::fromStdString(options().title);
    message.text = QString::fromStdString(options().message);
    message.timeout = options().timeout;
    message.priority = *priorityFromText(options().priority);
    message.application = QStringLiteral("tavo");
    m_messages.show(message).onFinished(this, [this](const CMReply<uint> &answer) {
        if (answer.error().isError()) {
            on_message_refused(answer.error());
        } else {
            on_message_shown(answer.value());
        }
    });
}

void ShowCommand::on_message_refused(const CMError &error)
{
    const QString name = error.name();
    const bool isNotThere = name == QLatin1String("org.freedesktop.DBus.Error.UnknownObject") ||
                            name == QLatin1String("org.freedesktop.DBus.Error.UnknownInterface") ||
                            name == QLatin1String("org.freedesktop.DBus.Error.UnknownMethod");
    if (isNotThere) {
        fail(ExitCode::Refused,
             QStringLiteral("this host shows no messages of programs: set "
                            "\"notifications\": true in its configuration of the "
                            "module dbus"));
    } else {
        fail(error);
    }
}

void ShowCommand::on_message_shown(uint id)
{
    m_id = id;
    report("queued");
    if (!options().wait) {
        finish(ExitCode::Ok);
        return;
    }
    m_clock.show(QStringLiteral("message %1 is open").arg(id));
}

void ShowCommand::report(const char *event)
{
    if (options().json) {
        terminal().printJson(
            toJson(QVariantHash{{QStringLiteral("event"), QString::fromLatin1(event)},
                                {QStringLiteral("id"), *m_id}},
                   JsonForm::Line));
    } else {
        const bool isQueued = event == QLatin1String("queued");
        terminal().print(isQueued ? QString::number(*m_id) : QString::fromLatin1(event));
    }
}

void ShowCommand::on_messages_closed(uint id, TavoMessages::End end)
{
    if (id != m_id || !options().wait) {
        return;
    }
    switch (end) {
    case TavoMessages::End::Expired:
        report("expired");
        finish(ExitCode::Ok);
        break;
    case TavoMessages::End::Dismissed:
        report("dismissed");
        finish(ExitCode::Dismissed);
        break;
    case TavoMessages::End::Closed:
        report("closed");
        m_signal != 0 ? finishBySignal(m_signal) : finish(ExitCode::Cancelled);
        break;
    case TavoMessages::End::Unknown:
        report("unknown");
        finish(ExitCode::EndUnknown);
        break;
    }
}

void ShowCommand::on_client_availableChanged(bool available)
{
    if (!available && m_id) {
        fail(ExitCode::EndUnknown,
             QStringLiteral("the host went away, and message %1 with it").arg(*m_id));
    }
}

void ShowCommand::interrupt(int signal)
{
    m_signal = signal;
    if (!m_id) {
        finishBySignal(signal);
        return;
    }
    m_messages.close(*m_id).onFinished(this, [this](const CMReply<bool> &answer) {
        if (answer.error().isError()) {
            finishBySignal(m_signal);
        }
    });
}
