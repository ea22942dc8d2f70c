// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/HistoryReader.h"

#include <client/TavoClientError.h>

#include <algorithm>
#include <memory>

namespace {
using Use = std::function<void(const PastNotifications &, const CMError &)>;

struct Reading
{
    TavoClient &client;
    QObject *context;
    TavoAttentionQuery query;
    int max;
    Use use;
    int pageSize;
    PastNotifications found{};
};

void readPage(const std::shared_ptr<Reading> &reading);

void take(const std::shared_ptr<Reading> &reading, const TavoAttentionPage &page)
{
    PastNotifications &found = reading->found;
    for (int index = 0; index < page.records().size(); ++index) {
        found.records.append(page.records().at(index));
    }
    found.isCut = found.records.size() > reading->max;
    if (page.next() != 0 && !found.isCut) {
        reading->query.setBefore(page.next());
        readPage(reading);
        return;
    }
    found.records.resize(std::min(found.records.size(), reading->max));
    reading->use(found, {});
}

void readPage(const std::shared_ptr<Reading> &reading)
{
    // One more than is wanted, to know whether there are more.
    const int rest = std::max(reading->max - reading->found.records.size(), 0);
    reading->query.setLimit(rest < reading->pageSize ? rest + 1 : reading->pageSize);
    reading->client.call(TavoAttentionHistoryPath(), TavoValue().setAttentionQuery(reading->query))
        .onFinished(reading->context, [reading](const CMReply<QVariant> &answer) {
            const CMError error = answer.error();
            if (TavoClientError::isTooLarge(error) && reading->pageSize > 1) {
                reading->pageSize /= 2;
                readPage(reading);
            } else if (error.isError()) {
                reading->use({}, error);
            } else {
                take(reading, TavoValue(answer.value().toHash()).attentionPage());
            }
        });
}
} // namespace

void readHistory(TavoClient &client, QObject *context, const TavoAttentionQuery &query, int max,
                 const Use &use)
{
    constexpr int maxPageSize = 200;
    readPage(std::make_shared<Reading>(Reading{client, context, query, max, use, maxPageSize}));
}
