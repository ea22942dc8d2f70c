// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/SoundCommand.h"

#include "base/Printable.h"
#include "cli/commands/SoundSource.h"
#include "cli/Priority.h"
#include <core/base/connect.h>
#include <core/base/uuid.h>

namespace {
QString newId()
{
    constexpr int enough = 8;
    return QStringLiteral("tavo-") + tavoGenerateUuid().left(enough);
}
} // namespace

SoundCommand::SoundCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : Command(options, client, terminal)
    , m_clock(terminal)
{
}

void SoundCommand::start()
{
    const auto source = soundSource(options());
    if (const auto *failure = std::get_if<ExitFailure>(&source)) {
        fail(failure->code, failure->reason);
        return;
    }
    m_item.setId(options().id.empty() ? newId() : QString::fromStdString(options().id))
        .setType(std::get<SoundSource>(source).type)
        .setContent(std::get<SoundSource>(source).content)
        .setContentStreamFormat(QString::fromStdString(options().streamFormat))
        .setPriority(*priorityFromText(options().priority))
        .setLoop(options().loop);
    if (!isToWait()) {
        enqueue();
        return;
    }
    m_inbox = std::make_unique<TavoInbox>(&client());
    tavoConnect(m_inbox.get(), &TavoInbox::opened, this, &SoundCommand::on_inbox_opened);
    tavoConnect(m_inbox.get(), &TavoInbox::failed, this, &SoundCommand::on_inbox_failed);
    tavoConnect(m_inbox.get(), &TavoInbox::lost, this, &SoundCommand::on_inbox_lost);
    tavoConnect(m_inbox.get(), &TavoInbox::responded, this, &SoundCommand::on_inbox_responded);
    tavoConnect(m_inbox.get(), &TavoInbox::requestsDropped, this,
                &SoundCommand::on_inbox_requestsDropped);
    // Opening an inbox waits for a host; this fails when there is none.
    onAnswer<QString>(client().version(), {}, [](const QString &) {});
}

void SoundCommand::on_inbox_opened(const CMPath &path)
{
    if (m_isSent) {
        return; // the inbox of another host, which does not have the sound
    }
    m_item.setPlaybackResponsePath(path);
    enqueue();
}

void SoundCommand::on_inbox_failed(const CMError &error)
{
    fail(error);
}

void SoundCommand::on_inbox_lost()
{
    fail(ExitCode::EndUnknown,
         QStringLiteral("the host went away, and the sound %1 with it").arg(m_item.id()));
}

void SoundCommand::enqueue()
{
    m_isSent = true;
    client().enqueue(m_item).onFinished(this, [this](const CMReply<QVariant> &answer) {
        if (!answer.error().isError()) {
            on_item_queued();
        } else {
            on_item_refused(answer.error());
        }
    });
}

void SoundCommand::on_item_refused(const CMError &error)
{
    if (error.name() != QLatin1String("Notifications")) {
        fail(error, TavoNotificationPlayerEnqueuePath());
        return;
    }
    // The reply gives no reason; the likeliest is that the id is in use.
    fail(ExitCode::Refused,
         QStringLiteral(
             "the host did not queue the sound %1: there may be one with that id already. "
             "Its log says why")
             .arg(m_item.id()));
}

void SoundCommand::on_item_queued()
{
    m_isQueued = true;
    report("queued");
    if (!isToWait()) {
        finish(ExitCode::Ok);
        return;
    }
    m_clock.show(QStringLiteral("%1 waits").arg(m_item.id()));
    for (const TavoNotificationPlayerResponse &response : m_early) {
        handle(response);
    }
}

void SoundCommand::report(const char *event)
{
    if (options().json) {
        terminal().printJson(
            toJson(QVariantHash{{QStringLiteral("event"), QString::fromLatin1(event)},
                                {QStringLiteral("id"), m_item.id()}},
                   JsonForm::Line));
    } else if (event == QLatin1String("queued")) {
        terminal().print(printable(m_item.id()));
    } else if (event != QLatin1String("started")) {
        terminal().print(QString::fromLatin1(event));
    }
}

void SoundCommand::on_inbox_responded(const TavoNotificationPlayerResponse &response)
{
    // Any client can send to an inbox.
    if (response.id() != m_item.id()) {
        return;
    }
    if (m_isQueued) {
        handle(response);
    } else {
        m_early.push_back(response);
    }
}

void SoundCommand::on_inbox_requestsDropped()
{
    const QString reason =
        QStringLiteral("the host left out reports, and the end of the sound %1 may be among them")
            .arg(m_item.id());
    if (m_isSent && !endsWithProgram()) {
        fail(ExitCode::EndUnknown, reason);
    } else if (m_isSent) {
        // Any client can send so much to the inbox that reports are left out. It must not end the sound.
        terminal().printError(reason);
    }
}

void SoundCommand::handle(const TavoNotificationPlayerResponse &response)
{
    using Type = TavoNotificationPlayerResponseType;
    switch (response.type()) {
    case Type::Started:
        report("started");
        m_clock.show(QStringLiteral("%1 sounds").arg(m_item.id()));
        break;
    case Type::Finished:
        report("finished");
        finish(ExitCode::Ok);
        break;
    case Type::Cancelled:
        report("cancelled");
        m_signal != 0 ? finishBySignal(m_signal) : finish(ExitCode::Cancelled);
        break;
    case Type::Failed:
        report("failed");
        fail(ExitCode::Failed, QStringLiteral("the sound %1 can't be played: the host's log says "
                                              "why, and tavo doctor may know")
                                   .arg(m_item.id()));
        break;
    default:
        report("unknown");
        finish(ExitCode::EndUnknown);
    }
}

void SoundCommand::interrupt(int signal)
{
    m_signal = signal;
    if (!m_isSent || !isToWait()) {
        finishBySignal(signal);
        return;
    }
    // The inbox gets the sound's end, which ends the program.
    client().cancelSound(m_item.id()).onFinished(this, [this](const CMReply<QVariant> &answer) {
        if (answer.error().isError()) {
            finishBySignal(m_signal);
        }
    });
}
