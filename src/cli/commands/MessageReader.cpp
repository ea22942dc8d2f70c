// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/MessageReader.h"

namespace {
using Use = std::function<void(const ShownMessages &, const CMError &)>;

/// What has been read so far; shared by the pending replies.
struct Reading
{
    ShownMessages messages;
    int pending = 0;
    Use use;

    void answered()
    {
        if (--pending == 0) {
            use(messages, {});
        }
    }
};

/// The text of a message, which is the first row of its node.
QString textOf(const QVariantList &rows)
{
    const QVariantHash row = rows.isEmpty() ? QVariantHash() : rows.first().toHash();
    return TavoRoles(row).title().toString();
}

void readOne(TavoClient &client, QObject *context, const std::shared_ptr<Reading> &reading,
             int index)
{
    const CMPath path = reading->messages.messages[index].path;
    reading->pending += 2;
    client.tree(path).onFinished(
        context, [reading, index, path](const CMReply<QVector<TavoClientNode>> &answer) {
            const auto nodes = answer.value();
            if (!nodes.isEmpty() && nodes.first().path == path) {
                reading->messages.messages[index].title = nodes.first().title;
            }
            reading->answered();
        });
    client.rows(path, 0, 1)
        .onFinished(context, [reading, index](const CMReply<QVariantList> &answer) {
            reading->messages.messages[index].text = textOf(answer.value());
            reading->answered();
        });
}
} // namespace

QVariantHash ShownMessage::toHash() const
{
    return {{QStringLiteral("path"), path.toString()},
            {QStringLiteral("title"), title},
            {QStringLiteral("text"), text}};
}

QVariantList ShownMessages::toList() const
{
    QVariantList list;
    for (const ShownMessage &message : messages) {
        list.append(message.toHash());
    }
    return list;
}

void readMessages(TavoClient &client, QObject *context, int max, const Use &use)
{
    // One more, to know whether there are more.
    client.rows(TavoNotificationDisplayQueuePath(), 0, max + 1)
        .onFinished(context, [&client, context, max, use](const CMReply<QVariantList> &answer) {
            if (answer.error().isError()) {
                use({}, answer.error());
                return;
            }
            const auto reading = std::make_shared<Reading>();
            reading->use = use;
            for (const QVariant &row : answer.value().mid(0, max)) {
                reading->messages.messages.append({CMPath::fromQVariant(row), {}, {}});
            }
            reading->messages.isCut = answer.value().size() > max;
            // One more than the requests, until all are sent.
            reading->pending = 1;
            for (int i = 0; i < reading->messages.messages.size(); ++i) {
                readOne(client, context, reading, i);
            }
            reading->answered();
        });
}
