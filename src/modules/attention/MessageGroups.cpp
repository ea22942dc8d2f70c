// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "MessageGroups.h"

#include <algorithm>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

/// That the node lists. Older ones follow when these have been opened or closed.
constexpr int maxListed = 50;

bool isOnDisplay(const QString &request)
{
    const QVariant current = CMRoot()->getValue(TavoNotificationDisplayCurrentPath());
    return TavoValue(current.toHash()).displayCurrent().id() == request;
}

void cancelOnDisplay(const CMPath &path)
{
    // The reply is ignored: if the message has gone already, there is nothing to close.
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path), {});
}

QStringList idsOf(const QVector<MessageGroups::Member> &members)
{
    QStringList ids;
    for (const MessageGroups::Member &member : members) {
        ids.append(member.id);
    }
    return ids;
}

/// The longest one, so that none of them is shown for less.
int timeoutOf(const QVector<MessageGroups::Member> &members)
{
    int longest = 1;
    for (const MessageGroups::Member &member : members) {
        if (member.timeout <= 0) {
            return 0;
        }
        longest = std::max(longest, member.timeout);
    }
    return longest;
}

TavoNotificationItemPriority::Enum priorityOf(const QVector<MessageGroups::Member> &members)
{
    const auto *const most =
        std::max_element(members.begin(), members.end(), [](const auto &left, const auto &right) {
            return left.priority < right.priority;
        });
    return most->priority;
}
} // namespace

MessageGroups::MessageGroups(CMNodes *nodes, Entrance &entrance)
    : m_nodes(nodes)
    , m_entrance(entrance)
{
}

MessageGroups::~MessageGroups()
{
    for (const Group &group : qAsConst(m_groups)) {
        cancelOnDisplay(group.node.path());
    }
}

QStringList MessageGroups::members(const QString &key) const
{
    return idsOf(m_groups.value(key).members);
}

TavoNotificationItemPriority::Enum MessageGroups::priority(const QString &key) const
{
    return m_groups.value(key).priority;
}

void MessageGroups::add(const QString &key, const QString &name, QVector<Member> members)
{
    for (Member &member : members) {
        member.key = QString::number(++m_lastMember);
    }
    auto group = m_groups.find(key);
    if (group == m_groups.end()) {
        group = m_groups.insert(key, Group{name, members});
        group->node = MessageNode(m_nodes, TavoAttentionMessagesPath() +
                                               QStringLiteral("group-%1").arg(++m_lastNode));
        group->priority = priorityOf(members);
        group->timeout = timeoutOf(members);
        fill(*group);
        request(key, *group);
        return;
    }
    group->members += members;
    // The display is to show them for their whole time, also if the others have used up most of it.
    if (group->timeout > 0 && isOnDisplay(group->request)) {
        group->timeout = -1;
    }
    fill(*group);
    adapt(key, *group);
}

void MessageGroups::change(const QString &key, const Member &member)
{
    Group &group = m_groups[key];
    const auto changed = std::find_if(group.members.begin(), group.members.end(),
                                      [&](const Member &each) { return each.id == member.id; });
    Q_ASSERT(changed != group.members.end());
    const QString memberKey = changed->key;
    *changed = member;
    changed->key = memberKey;
    fill(group);
    adapt(key, group);
}

void MessageGroups::remove(const QString &key, const QString &id)
{
    const auto group = m_groups.find(key);
    Q_ASSERT(group != m_groups.end());
    const auto isIt = [&id](const Member &member) { return member.id == id; };
    group->members.erase(std::remove_if(group->members.begin(), group->members.end(), isIt),
                         group->members.end());
    if (!group->members.isEmpty()) {
        fill(*group);
        return;
    }
    m_requests.remove(group->request);
    cancelOnDisplay(group->node.path());
    group->node.dispose();
    m_groups.erase(group);
}

void MessageGroups::fill(Group &group)
{
    QVector<MessageNode::Action> actions;
    const int count = std::min(group.members.size(), maxListed);
    for (int index = 0; index < count; ++index) {
        const Member &member = group.members[group.members.size() - 1 - index];
        actions.append({member.key, member.title});
    }
    TavoRoles text;
    text.setType(TavoRolesType::Text).setApplication(group.name);
    if (group.members.size() > count) {
        text.setTitle(QStringLiteral("and %1 older ones").arg(group.members.size() - count));
    }
    QString title = QStringLiteral("%1 messages").arg(group.members.size());
    if (!group.name.isEmpty()) {
        title += QStringLiteral(" of ") + group.name;
    }
    group.node.show(title, text, actions, [this](CMActivateNode *action) {
        action->setInvoke(this, &MessageGroups::on_member_activated, Qt::QueuedConnection);
    });
}

void MessageGroups::adapt(const QString &key, Group &group)
{
    const auto priority = priorityOf(group.members);
    const int timeout = timeoutOf(group.members);
    if (group.priority != priority || group.timeout != timeout) {
        group.priority = priority;
        group.timeout = timeout;
        m_requests.remove(group.request);
        cancelOnDisplay(group.node.path());
        request(key, group);
    }
}

void MessageGroups::request(const QString &key, Group &group)
{
    group.request = tavoGenerateUuid();
    m_requests.insert(group.request, key);
    const auto item = TavoNotificationDisplayItem()
                          .setId(group.request)
                          .setPath(group.node.path())
                          .setPriority(group.priority)
                          .setTimeout(group.timeout);
    const CMReply<QVariant> reply;
    reply.addWatcher(
        this,
        [this, request = group.request](const CMVoidReply &answer) {
            if (answer.error().isError()) {
                LOG4CPLUS_WARN(logger, "A group of messages is not shown: "
                                           << answer.error().message().toString());
                const Entrance::Hold held = m_entrance.hold();
                end(request, TavoNotificationDisplayEnd::Unknown);
            }
        },
        Qt::QueuedConnection);
    CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                     TavoValue().setNotificationDisplayItem(item), reply);
}

void MessageGroups::displayEnded(const TavoNotificationDisplayEnded &ended)
{
    end(ended.id(), ended.end());
}

void MessageGroups::displayGone()
{
    const QStringList requests = m_requests.keys();
    for (const QString &request : requests) {
        end(request, TavoNotificationDisplayEnd::Unknown);
    }
}

void MessageGroups::end(const QString &request, TavoNotificationDisplayEnd::Enum end)
{
    const auto key = m_requests.find(request);
    if (key == m_requests.end()) {
        return;
    }
    Group group = m_groups.take(*key);
    m_requests.erase(key);
    group.node.dispose();
    Q_EMIT ended(idsOf(group.members), end);
}

void MessageGroups::on_member_activated(const CMSetDataRequest &request)
{
    const Entrance::Hold held = m_entrance.hold();
    for (const Group &group : qAsConst(m_groups)) {
        const auto key = group.node.actionAt(request.path());
        const auto *const member =
            std::find_if(group.members.begin(), group.members.end(),
                         [&key](const Member &each) { return each.key == key; });
        if (member != group.members.end()) {
            request.reply().setValue(QVariant());
            const QString id = member->id;
            Q_EMIT opened(id);
            return;
        }
    }
    request.reply().setError(
        CMError(QStringLiteral("Attention"), TAVO_TR("The group has no such message any more")));
}
