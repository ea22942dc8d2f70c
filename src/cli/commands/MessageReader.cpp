// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/MessageReader.h"

#include <QElapsedTimer>
#include <QHash>

#include <algorithm>
#include <limits>

namespace {
using Use = std::function<void(const ShownMessages &, const CMError &)>;

/// What has been read so far.
struct Reading
{
    TavoClient &client;
    QObject *context;
    int max;
    Use use;
    CMReply<QVariant> current; ///< what is on display
    QVector<CMPath> paths{};   ///< of the messages
    bool isCut = false;        ///< there are more messages
    QHash<CMPath, TavoClientDescription> nodes{};
};

/// How long it stays on display from now on; nothing if until it is closed.
std::optional<int> remainingOf(const TavoNotificationDisplayCurrent &current)
{
    if (current.timeout() <= 0) {
        return std::nullopt;
    }
    QElapsedTimer now;
    now.start();
    const qint64 shown = now.msecsSinceReference() - current.since();
    return int(std::clamp<qint64>(current.remaining() - shown, 0, current.timeout()));
}

ShownMessages messagesOf(const Reading &reading)
{
    ShownMessages result;
    const auto current = TavoValue(reading.current.value().toHash()).displayCurrent();
    for (const CMPath &path : reading.paths) {
        const TavoClientDescription node = reading.nodes.value(path);
        const bool isShown = path == current.path();
        result.messages.append(
            {path, node.title, node.text, isShown ? remainingOf(current) : std::nullopt});
    }
    result.isCut = reading.isCut;
    return result;
}

void describe(const std::shared_ptr<Reading> &reading)
{
    if (reading->paths.isEmpty()) {
        reading->use(messagesOf(*reading), {});
        return;
    }
    reading->client.describe(reading->paths)
        .onFinished(reading->context, [=](const CMReply<QVector<TavoClientDescription>> &answer) {
            if (answer.error().isError()) {
                reading->use({}, answer.error());
                return;
            }
            for (const TavoClientDescription &node : answer.value()) {
                reading->nodes.insert(node.path, node);
            }
            reading->use(messagesOf(*reading), {});
        });
}

void readPaths(const std::shared_ptr<Reading> &reading)
{
    // One more than is wanted, to know whether there are more.
    const int count = std::min(reading->max, std::numeric_limits<int>::max() - 1) + 1;
    reading->client.rows(TavoNotificationDisplayQueuePath(), 0, count)
        .onFinished(reading->context, [=](const CMReply<QVariantList> &answer) {
            if (answer.error().isError()) {
                reading->use({}, answer.error());
                return;
            }
            const QVariantList rows = answer.value();
            for (const QVariant &row : rows.mid(0, reading->max)) {
                reading->paths.append(CMPath::fromQVariant(row));
            }
            reading->isCut = rows.size() > reading->max;
            describe(reading);
        });
}
} // namespace

QVariantHash ShownMessage::toHash() const
{
    QVariantHash fields{{QStringLiteral("path"), path.toString()},
                        {QStringLiteral("title"), title},
                        {QStringLiteral("text"), text}};
    if (remaining) {
        fields.insert(QStringLiteral("remaining"), *remaining);
    }
    return fields;
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
    // Finished before the paths, because replies come in the order of their requests.
    const CMReply<QVariant> current = client.getValue(TavoNotificationDisplayCurrentPath());
    readPaths(std::make_shared<Reading>(Reading{client, context, max, use, current}));
}
