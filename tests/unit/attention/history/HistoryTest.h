// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/attention/history/History.h"
#include "support/EventLoop.h"
#include "support/Text.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

/// A history in a folder of its own.
class HistoryTest : public testing::Test
{
protected:
    using State = HistoryEntry::State;

    HistoryTest() { settings.file = folder.filePath("history.db"_s); }

    /// Starts the history, or starts it again after its end.
    void start()
    {
        history.reset();
        history = std::make_unique<History>(settings);
        failed = std::make_unique<QSignalSpy>(history.get(), &History::failed);
        recovered = std::make_unique<QSignalSpy>(history.get(), &History::recovered);
        damaged = std::make_unique<QSignalSpy>(history.get(), &History::damaged);
    }

    static HistoryEntry entry(const QString &title, const QString &text = {})
    {
        HistoryEntry entry;
        entry.id = "id-"_s + title;
        entry.time = QDateTime::currentMSecsSinceEpoch();
        entry.source = "org.example.mail"_s;
        entry.application = "Mail"_s;
        entry.title = title;
        entry.text = text;
        return entry;
    }

    Result<HistoryPage> answer(const HistoryQuery &query)
    {
        std::optional<Result<HistoryPage>> result;
        history->page(query, [&](const Result<HistoryPage> &page) { result = page; });
        EXPECT_TRUE(waitFor([&] { return result.has_value(); }, std::chrono::seconds(20)));
        return result.value_or(Failure{"no answer"_s});
    }

    HistoryPage page(const HistoryQuery &query = {})
    {
        const Result<HistoryPage> result = answer(query);
        if (const auto *failure = std::get_if<Failure>(&result)) {
            ADD_FAILURE() << failure->reason.toStdString();
            return {};
        }
        return std::get<HistoryPage>(result);
    }

    static QStringList titles(const HistoryPage &page)
    {
        QStringList titles;
        for (const HistoryEntry &entry : page.entries) {
            titles.append(entry.title);
        }
        return titles;
    }

    QStringList titles(const HistoryQuery &query = {}) { return titles(page(query)); }

    QStringList search(const QString &text)
    {
        HistoryQuery query;
        query.text = text;
        return titles(query);
    }

    QTemporaryDir folder;
    HistorySettings settings;
    std::unique_ptr<History> history;
    std::unique_ptr<QSignalSpy> failed;
    std::unique_ptr<QSignalSpy> recovered;
    std::unique_ptr<QSignalSpy> damaged;
};
