// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayScript.h"

static log4cplus::Logger logger = log4cplus::Logger::getInstance("Demo");

static TavoNotificationDisplayItem message(const char *title, const char *text, int timeout)
{
    return TavoNotificationDisplayItem()
        .setTitle(title)
        .setMessage(text)
        .setTimeout(timeout)
        .setPriority(TavoNotificationItemPriority::Normal);
}

DisplayScript::DisplayScript(CMNodes *nodes, Timeline *timeline, QObject *parent)
    : QObject(parent)
    , m_timeline(timeline)
    , m_script(timeline, this)
    , m_menu(publishMenu(nodes))
{
    CMRoot()->connectRowsChange(TavoNotificationDisplayQueuePath(), this,
                                &DisplayScript::on_queue_rowsChanged);
    writeScript();
}

void DisplayScript::writeScript()
{
    // Together with a sound: a message that is shown at once, and one that waits.
    m_script.step("sent chime", 0, [this] {
        open(QStringLiteral("doorbell"), message("Doorbell", "Somebody is at the door", 1500));
        open(QStringLiteral("parcel"), message("Parcel", "A parcel is waiting", 1000));
    });

    // A node of this module, which a client closes before its timeout. Then a message that is
    // cancelled.
    m_script.step("display closed parcel", 0, [this] {
        open(QStringLiteral("menu"),
             TavoNotificationDisplayItem().setPath(m_menu).setTimeout(5000).setPriority(
                 TavoNotificationItemPriority::Normal));
    });
    m_script.step("display shown menu", 1000, [this] { close(QStringLiteral("menu")); });
    m_script.step("display closed menu", 0, [this] {
        open(QStringLiteral("download"), message("Download", "Downloading the news", 5000));
    });
    m_script.step("display shown download", 800, [this] { cancel(QStringLiteral("download")); });

    // Together with the urgent sound, an urgent message interrupts another one, which gets the rest
    // of its time afterwards. A third one is cancelled before its turn.
    m_script.step("sent announcement", 0, [this] {
        open(QStringLiteral("news"), message("News", "The news is being read", 3000));
        open(QStringLiteral("reminder"), message("Reminder", "Water the plants", 1000));
    });
    m_script.step("sent alarm", 0, [this] {
        open(QStringLiteral("fire"), message("Fire", "Leave the house", 2000)
                                         .setPriority(TavoNotificationItemPriority::Urgent));
    });
    m_script.step("display shown news", 500, [this] { cancel(QStringLiteral("reminder")); });

    // A message without a timeout stays until it is closed.
    m_script.step("sent ring", 0,
                  [this] { open(QStringLiteral("call"), message("Call", "Somebody calls", 0)); });
    m_script.step("ended ring", 500, [this] { close(QStringLiteral("call")); });
}

CMPath DisplayScript::publishMenu(CMNodes *nodes) const
{
    CMListRowsNode *menu = CMListRowsNode::create(nodes, CMPath(QStringLiteral("/demo/menu")));
    menu->setTitle("Where shall the sound come from?");
    for (const char *choice : {"Radio", "Records", "Nowhere"}) {
        menu->rowsAppend(TavoRoles().setType(TavoRolesType::Text).setTitle(choice));
    }
    return menu->path();
}

void DisplayScript::open(const QString &id, const TavoNotificationDisplayItem &item)
{
    m_timeline->note(
        QStringLiteral("display sent"),
        {{QStringLiteral("id"), id}, {QStringLiteral("timeout"), item.timeout() / 1000.0}});
    ask(TavoNotificationDisplayOpenPath(), TavoValue().setNotificationDisplayItem(item),
        [this, id](const CMReply<QVariant> &answer) {
            if (answer.error().isError()) {
                note(QStringLiteral("display refused"), id);
                return;
            }
            m_names.insert(TavoValue(answer.value().toHash()).path(), id);
            note(QStringLiteral("display opened"), id);
        });
}

void DisplayScript::close(const QString &id)
{
    note(QStringLiteral("display closing"), id);
    const CMPath path = m_names.key(id);
    if (CMSubscribe::closeNode(path)) {
        m_kinds.insert(path, QStringLiteral("closed"));
    }
}

void DisplayScript::cancel(const QString &id)
{
    note(QStringLiteral("display cancelling"), id);
    const CMPath path = m_names.key(id);
    ask(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path),
        [this, path](const CMReply<QVariant> &answer) {
            if (!answer.error().isError()) {
                m_kinds.insert(path, QStringLiteral("cancelled"));
            }
        });
}

void DisplayScript::ask(const CMPath &path, const TavoValue &value,
                        const std::function<void(const CMReply<QVariant> &)> &answered)
{
    ++m_answersDue;
    const CMReply<QVariant> reply;
    CMRoot()->invoke(path, value, reply);
    reply.onFinished(this, [this, answered](const CMReply<QVariant> &answer) {
        if (answer.error().isError()) {
            LOG4CPLUS_WARN(logger, "Refused: " << answer.error().message().toString());
        }
        answered(answer);
        --m_answersDue;
        tellSights();
    });
}

void DisplayScript::on_queue_rowsChanged(const CMPath &path, const QStringList & /*changes*/,
                                         int /*first*/, int /*count*/)
{
    // The change itself does not matter: the rows say what is on display now.
    const Timeline::Moment moment = Timeline::now();
    const CMReply<QVariant> reply;
    CMRoot()->request(CMGetRowsRequest(path, 0, -1, reply));
    reply.onFinished(this, [this, moment](const CMReply<QVariant> &answer) {
        Sight sight{moment, {}};
        const QVariantList rows = answer.value().toList();
        for (const QVariant &row : rows) {
            sight.rows.append(CMPath::fromQVariant(row));
        }
        m_sights.enqueue(sight);
        tellSights();
    });
}

void DisplayScript::tellSights()
{
    while (m_answersDue == 0 && !m_sights.isEmpty()) {
        tell(m_sights.dequeue());
    }
}

void DisplayScript::tell(const Sight &sight)
{
    const QList<CMPath> before = std::exchange(m_rows, sight.rows);
    const CMPath left = before.value(0);
    const CMPath came = sight.rows.value(0);
    if (left != came && !left.isEmpty()) {
        note(QStringLiteral("display hidden"), left, sight);
    }
    for (const CMPath &path : before) {
        if (!sight.rows.contains(path)) {
            note(QStringLiteral("display closed"), path, sight, kindOf(path));
        }
    }
    if (left != came && !came.isEmpty()) {
        note(QStringLiteral("display shown"), came, sight);
    }
}

QString DisplayScript::kindOf(const CMPath &path) const
{
    return m_names.contains(path) ? m_kinds.value(path, QStringLiteral("expired")) : QString();
}

void DisplayScript::note(const QString &event, const CMPath &path, const Sight &sight,
                         const QString &kind)
{
    QJsonObject details{{QStringLiteral("id"), m_names.value(path, path.toString())}};
    if (!kind.isEmpty()) {
        details.insert(QStringLiteral("kind"), kind);
    }
    m_timeline->note(event, details, sight.moment);
}

void DisplayScript::note(const QString &event, const QString &id)
{
    m_timeline->note(event, {{QStringLiteral("id"), id}});
}
