// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/uuid.h"

#include "core/base/stream.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <future>
#include <set>
#include <vector>

TEST(UuidTest, HasTheFormOfARandomIdentifier)
{
    const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")));
    for (int i = 0; i < 1000; ++i) {
        const QString uuid = tavoGenerateUuid();
        EXPECT_TRUE(form.match(uuid).hasMatch()) << uuid;
    }
}

TEST(UuidTest, VariesInEveryDigitExceptVersionAndVariant)
{
    std::vector<std::set<ushort>> seen(36);
    for (int i = 0; i < 1000; ++i) {
        const QString uuid = tavoGenerateUuid();
        for (int place = 0; place < uuid.size(); ++place) {
            seen[std::size_t(place)].insert(uuid.at(place).unicode());
        }
    }
    for (std::size_t place = 0; place < seen.size(); ++place) {
        const bool dash = place == 8 || place == 13 || place == 18 || place == 23;
        const std::size_t expected = dash || place == 14 ? 1 : place == 19 ? 4 : 16;
        EXPECT_EQ(seen[place].size(), expected) << "at place " << place;
    }
}

TEST(UuidTest, IsNewEachTimeInEveryThread)
{
    constexpr int threads = 8;
    constexpr int each = 20000;
    std::vector<std::future<std::vector<QString>>> makers;
    makers.reserve(threads);
    for (int i = 0; i < threads; ++i) {
        makers.push_back(std::async(std::launch::async, [] {
            std::vector<QString> made;
            made.reserve(each);
            for (int n = 0; n < each; ++n) {
                made.push_back(tavoGenerateUuid());
            }
            return made;
        }));
    }
    std::set<QString> all;
    for (auto &maker : makers) {
        for (const QString &uuid : maker.get()) {
            all.insert(uuid);
        }
    }
    EXPECT_EQ(all.size(), std::size_t(threads * each));
}
