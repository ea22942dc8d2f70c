// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <attention/SourceRates.h>

namespace {
class SourceRatesTest : public testing::Test
{
protected:
    SourceRatesTest() { m_rates.setLimit({3, 3000}); }

    int takenOf(const QString &source, int attempts, qint64 now)
    {
        int taken = 0;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            taken += m_rates.take(source, now) ? 1 : 0;
        }
        return taken;
    }

    SourceRates m_rates;
    const QString m_mail = QStringLiteral("mail");
};

TEST_F(SourceRatesTest, TakesAsManyAtOnceAsThePeriodAllows)
{
    EXPECT_EQ(takenOf(m_mail, 10, 0), 3);
}

TEST_F(SourceRatesTest, TakesMoreAsTimePasses)
{
    takenOf(m_mail, 10, 0);
    EXPECT_EQ(takenOf(m_mail, 10, 999), 0);
    EXPECT_EQ(takenOf(m_mail, 10, 1000), 1);
    EXPECT_EQ(takenOf(m_mail, 10, 10000), 3);
}

TEST_F(SourceRatesTest, CountsEachSourceByItself)
{
    takenOf(m_mail, 10, 0);
    EXPECT_EQ(takenOf(QStringLiteral("chat"), 10, 0), 3);
}

TEST_F(SourceRatesTest, NewSourcesNeitherMissTheirTurnNorLiftTheLimitOfABusyOne)
{
    while (m_rates.take(m_mail, 0)) {
    }
    for (int number = 0; number < 2000; ++number) {
        EXPECT_TRUE(m_rates.take(QString::number(number), 0)) << number;
    }
    EXPECT_FALSE(m_rates.take(m_mail, 0));
}
} // namespace
