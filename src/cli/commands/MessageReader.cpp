// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/MessageReader.h"

#include "cli/commands/ErrorText.h"

#include <QElapsedTimer>
#include <QHash>

#include <algorithm>

namespace {
constexpr int maxRowsAtOnce = 1000;

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

/// Describes the messages from the first one on, up to count of them with each request. Halves the
/// count if a request or its reply is too large.
void describe(const std::shared_ptr<Reading> &reading, int first, int count)
{
    const QVector<CMPath> paths = reading->paths.mid(first, count);
    if (paths.isEmpty()) {
        reading->use(messagesOf(*reading), {});
        return;
    }
    reading->client.describe(paths).onFinished(
        reading->context, [=](const CMReply<QVector<TavoClientDescription>> &answer) {
            const CMError error = answer.error();
            if (isTooLarge(error) && paths.size() > 1) {
                describe(reading, first, paths.size() / 2);
                return;
            }
            if (error.isError() && !isTooLarge(error)) {
                reading->use({}, error);
                return;
            }
            for (const TavoClientDescription &node : answer.value()) {
                reading->nodes.insert(node.path, node);
            }
            describe(reading, first + paths.size(), count);
        });
}
/// Reads the paths that follow those that have been read, in parts that fit into a reply.
void readPaths(const std::shared_ptr<Reading> &reading)
{
    // One more than is wanted, to know whether there are more.
    const int first = reading->paths.size();
    const int count = std::min(maxRowsAtOnce - 1, reading->max - first) + 1;
    reading->client.rows(TavoNotificationDisplayQueuePath(), first, count)
        .onFinished(reading->context, [=](const CMReply<QVariantList> &answer) {
            if (answer.error().isError()) {
                reading->use({}, answer.error());
                return;
            }
            const QVariantList rows = answer.value();
            for (const QVariant &row : rows) {
                reading->paths.append(CMPath::fromQVariant(row));
            }
            reading->isCut = reading->paths.size() > reading->max;
            if (rows.size() == count && !reading->isCut) {
                readPaths(reading);
                return;
            }
            reading->paths.resize(std::min(reading->paths.size(), reading->max));
            describe(reading, 0, reading->max);
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
