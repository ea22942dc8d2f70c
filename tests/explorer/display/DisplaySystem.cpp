// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplaySystem.h"

#include "support/Text.h"

namespace {
using Form = DisplayModel::Form;
using Kind = DisplayStep::Kind;

// The texts of error replies.
constexpr auto notOpen = "Node already closed or non-existent";
constexpr auto noPath = "Path to close empty";
constexpr auto notOpened = "Failed to enqueue notification";

// What is logged.
constexpr auto queueIsEmpty = "WARN Called cancel display notification but queue is empty";

CMPath sharedPath()
{
    return CMPath("/client/shared"_s);
}
} // namespace

DisplaySystem::DisplaySystem(const std::string &module, const DisplayBounds &bounds)
    : m_host(module, [this](const char *words) { lastWords(words); })
    , m_bounds(bounds)
{
}

void DisplaySystem::start()
{
    m_model = {};
    m_paths = {{DisplayModel::sharedPath, sharedPath()}};
    m_expectedLog.clear();
    m_broken = false;
    m_client = std::make_unique<DisplayClient>(&m_host);
}

std::vector<exploration::Action> DisplaySystem::actions()
{
    std::vector<exploration::Action> actions;
    for (const DisplayStep &step : DisplayStep::possible(m_model, m_bounds)) {
        actions.push_back(step.number());
    }
    return actions;
}

void DisplaySystem::act(exploration::Action action)
{
    const DisplayStep step = DisplayStep::fromNumber(action);
    say(step.words());
    switch (step.kind) {
    case Kind::Open:
        open(step.form, step.priority, step.time);
        break;
    case Kind::Tick:
        pass(true);
        break;
    case Kind::LateTick:
        pass(false);
        break;
    case Kind::Deliver:
        deliverTimers();
        break;
    default:
        remove(step);
    }
    check();
}

std::string DisplaySystem::state()
{
    return m_model.key();
}

void DisplaySystem::inspect()
{
    say("requests that are refused");
    for (const auto &[path, text] :
         {std::pair(CMPath(), noPath), {CMPath("/nowhere"_s), notOpen}}) {
        const CMReply<QVariant> reply = DisplayClient::cancel(path);
        ModuleHost::settle();
        if (!path.isEmpty() && m_model.queue().empty()) {
            m_expectedLog.append(queueIsEmpty);
        }
        expectRefusal(reply, text);
        check();
        tried();
    }
    for (const auto &item :
         {TavoNotificationDisplayItem(), TavoNotificationDisplayItem()
                                             .setPriority(TavoNotificationItemPriority::Enum(99))
                                             .setTimeout(tick)}) {
        const CMReply<QVariant> reply = DisplayClient::open(item);
        ModuleHost::settle();
        m_expectedLog.append("ERROR Dropping empty notification"_s);
        expectRefusal(reply, notOpened);
        check();
        tried();
    }
}

void DisplaySystem::finish()
{
    // Before anything is opened, this would only repeat the first steps.
    if (!m_broken && m_model.opened() > 0) {
        runOut();
    }
    m_client.reset();
}

/// Opens an urgent notification and shows everything until its timeout.
void DisplaySystem::runOut()
{
    say("then an urgent notification comes; those without a timeout are cancelled when they are "
        "shown");
    open(Form::Reference, 99, 1);
    check();
    while (!m_model.queue().empty() && !m_broken) {
        if (m_model.isHeadTimed()) {
            pass(true);
        } else {
            remove({Kind::Cancel});
        }
        check();
    }
}

void DisplaySystem::open(Form form, int priority, int time)
{
    const TavoNotificationDisplayItem item = itemOf(form, priority, time);
    const CMReply<QVariant> reply = DisplayClient::open(item);
    const bool overtakes = m_model.queue().empty() || m_model.queue().front().priority < priority;
    if (overtakes && m_model.isDue()) {
        m_expectedLog.append(QStringLiteral("WARN The item should have been expired, elapsed: %1 "
                                            "item length %2 , removing")
                                 .arg(m_model.elapsed() * tick)
                                 .arg(m_model.queue().front().left * tick));
    }
    ModuleHost::settle();
    const int number = m_model.open(form, priority, time);
    if (!reply.isFinished() || reply.error().isError()) {
        broken("a notification is opened", reply.error().message().toString());
        return;
    }
    const CMPath path = TavoValue(reply.value().toHash()).path();
    if (form != Form::Message) {
        if (path != item.path()) {
            broken("the reply has the client's own path unchanged", path.toString());
        }
    } else if (path.parent() != TavoNotificationDisplaySimpleMessageNodePath() ||
               m_paths.values().contains(path)) {
        broken("the reply for a message has the path of a new node", path.toString());
    }
    if (form != Form::Shared) {
        m_paths.insert(number, path);
    }
}

void DisplaySystem::remove(const DisplayStep &step)
{
    const int name = m_model.queue().at(std::size_t(step.index)).path();
    const CMPath path = m_paths.value(name);
    const CMReply<QVariant> reply = send(step.kind, path);
    ModuleHost::settle();
    m_model.cancel(name);
    if (step.kind == Kind::CloseThenCancel) {
        if (m_model.queue().empty()) {
            m_expectedLog.append(queueIsEmpty);
        }
        expectRefusal(reply, notOpen);
    } else if (step.kind != Kind::Close) {
        expectCancelled(reply);
    }
}

/// Returns the reply to the cancel request, if one is sent.
CMReply<QVariant> DisplaySystem::send(Kind kind, const CMPath &path)
{
    if (kind == Kind::Close || kind == Kind::CloseThenCancel) {
        DisplayClient::close(path);
    }
    CMReply<QVariant> reply;
    if (kind == Kind::CancelBare) {
        reply = DisplayClient::send(TavoNotificationDisplayCancelNotifyPath(), path.toQVariant());
    } else if (kind != Kind::Close) {
        reply = DisplayClient::cancel(path);
    }
    if (kind == Kind::CancelThenClose) {
        DisplayClient::close(path);
    }
    return reply;
}

void DisplaySystem::pass(bool onTime)
{
    m_host.clock().advance(std::chrono::milliseconds(tick));
    m_model.passTime();
    if (onTime) {
        deliverTimers();
    }
}

void DisplaySystem::deliverTimers()
{
    m_host.clock().pass({});
    ModuleHost::settle();
    if (m_model.isDue()) {
        m_model.expire();
    }
}

QString DisplaySystem::messageText(int number)
{
    return "message "_s + QString::number(number);
}

TavoNotificationDisplayItem DisplaySystem::itemOf(Form form, int priority, int time) const
{
    TavoNotificationDisplayItem item;
    item.setPriority(TavoNotificationItemPriority::Enum(priority)).setTimeout(time * tick);
    const CMPath own = CMPath("/client/own"_s) + QString::number(m_paths.size());
    switch (form) {
    case Form::Message:
        // The module replaces this path by its own.
        return item.setMessage(messageText(m_model.opened())).setPath(own);
    case Form::Shared:
        return item.setPath(sharedPath());
    case Form::Reference:
        break;
    }
    if (m_model.namedNext() != DisplayModel::none) {
        item.setId(m_paths.value(m_model.namedNext()).name());
    }
    return item.setPath(own);
}
