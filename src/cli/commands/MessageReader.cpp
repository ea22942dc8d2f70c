// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/MessageReader.h"

#include <QElapsedTimer>
#include <QHash>

#include <algorithm>

namespace {
using Use = std::function<void(const ShownMessages &, const CMError &)>;

/// What has been read so far.
struct Reading
{
    TavoClient &client;
    QObject *context;
    Use use;
    QVector<CMPath> paths; ///< of the messages
    bool isCut;            ///< there are more messages
    TavoNotificationDisplayCurrent current;
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
    for (const CMPath &path : reading.paths) {
        const TavoClientDescription node = reading.nodes.value(path);
        result.messages.append({path, node.title, node.text});
    }
    if (!result.messages.isEmpty() && result.messages.first().path == reading.current.path()) {
        result.messages.first().remaining = remainingOf(reading.current);
    }
    result.isCut = reading.isCut;
    return result;
}

/// Whether the request or its reply is too large.
bool isTooMuch(const CMError &error)
{
    return error.name() == TavoClientError::limitExceeded() ||
           error.name() == QLatin1String("UnsupportedValue");
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
            if (isTooMuch(error) && paths.size() > 1) {
                describe(reading, first, paths.size() / 2);
                return;
            }
            if (error.isError() && !isTooMuch(error)) {
                reading->use({}, error);
                return;
            }
            for (const TavoClientDescription &node : answer.value()) {
                reading->nodes.insert(node.path, node);
            }
            describe(reading, first + paths.size(), count);
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
    // Finished before the other, because replies come in the order of their requests.
    const CMReply<QVariant> current = client.getValue(TavoNotificationDisplayCurrentPath());
    // One more, to know whether there are more.
    client.rows(TavoNotificationDisplayQueuePath(), 0, max + 1)
        .onFinished(context,
                    [&client, context, max, use, current](const CMReply<QVariantList> &answer) {
                        if (answer.error().isError()) {
                            use({}, answer.error());
                            return;
                        }
                        const QVariantList rows = answer.value();
                        const auto reading = std::make_shared<Reading>(
                            Reading{client,
                                    context,
                                    use,
                                    {},
                                    rows.size() > max,
                                    TavoValue(current.value().toHash()).displayCurrent()});
                        for (const QVariant &row : rows.mid(0, max)) {
                            reading->paths.append(CMPath::fromQVariant(row));
                        }
                        describe(reading, 0, max);
                    });
}
