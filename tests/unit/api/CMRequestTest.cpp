// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>

using Reply = CMReply<QVariant>;

namespace {
CMSetDataRequest requestFor(const Reply &reply)
{
    return {path, QStringLiteral("value"), reply};
}
} // namespace

TEST(CMRequestTest, HasAPathAValueAndAReply)
{
    const Reply reply;
    const CMSetDataRequest request = requestFor(reply);
    EXPECT_EQ(request.type(), CMRequest::Type::SetData);
    EXPECT_EQ(request.path(), path);
    EXPECT_EQ(request.value(), QVariant("value"));
    EXPECT_EQ(request.reply(), reply);
}

TEST(CMRequestTest, KnowsItsKind)
{
    EXPECT_EQ(CMRequest().type(), CMRequest::Type::None);
    EXPECT_EQ(CMGetDataRequest(path, Reply()).type(), CMRequest::Type::GetData);
    EXPECT_EQ(CMGetRowsRequest(path, 2, 3, Reply()).type(), CMRequest::Type::GetRows);
    EXPECT_EQ(CMMatchRowRequest(path, 5, Reply()).type(), CMRequest::Type::MatchRow);
}

TEST(CMRequestTest, KeepsTheRequestedRows)
{
    const CMGetRowsRequest request(path, 2, 3, Reply());
    EXPECT_EQ(request.first(), 2);
    EXPECT_EQ(request.count(), 3);
}

TEST(CMRequestTest, SharesItsDataWithItsCopies)
{
    const Reply reply;
    const CMSetDataRequest request = requestFor(reply);
    CMRequest plain;
    plain = request;
    const CMSetDataRequest copy(plain);
    EXPECT_EQ(copy.value(), request.value());
    copy.reply().setValue(1);
    EXPECT_TRUE(request.reply().isFinished());
}

TEST(CMRequestTest, CanBeAnsweredThroughItsReply)
{
    const Reply reply;
    requestFor(reply).reply().setValue(5);
    EXPECT_EQ(reply.value(), QVariant(5));
}

TEST(CMRequestTest, AnswersWithAnErrorWhenDroppedWithoutAnAnswer)
{
    const Reply reply;
    {
        CMSetDataRequest last;
        {
            const CMSetDataRequest first = requestFor(reply);
            last = first;
        }
        EXPECT_FALSE(reply.isFinished());
    }
    EXPECT_EQ(reply.error().name(), CMErrors::noAnswer());
    EXPECT_TRUE(reply.error().message().toString().contains(path.toString()));
}

TEST(CMRequestTest, DoesNotChangeAnAnswerWhenDropped)
{
    const Reply reply;
    {
        const CMSetDataRequest request = requestFor(reply);
        reply.setValue(5);
    }
    EXPECT_FALSE(reply.error().isError());
}

TEST(CMRequestTest, CanBeAnsweredLaterThroughAKeptReply)
{
    const Reply reply;
    std::optional<Reply> kept = requestFor(reply).reply();
    EXPECT_FALSE(reply.isFinished());
    kept->setValue(5);
    EXPECT_EQ(reply.value(), QVariant(5));
}

TEST(CMRequestTest, CanBeAnsweredLaterThroughAViewWithoutAType)
{
    const Reply reply;
    std::optional<CMVoidReply> kept = requestFor(reply).reply();
    EXPECT_FALSE(reply.isFinished());
    kept->setError(CMError(QStringLiteral("Test"), "later"));
    EXPECT_EQ(reply.error().name(), "Test");
}

TEST(CMRequestTest, AnswersWithAnErrorWhenTheKeptReplyIsDropped)
{
    const Reply reply;
    std::optional<Reply> kept = requestFor(reply).reply();
    kept.reset();
    EXPECT_EQ(reply.error().name(), CMErrors::noAnswer());
}

TEST(CMRequestTest, WakesAWaitingRequesterWhenDropped)
{
    const Reply reply;
    std::optional<CMSetDataRequest> request = requestFor(reply);
    auto waiting = std::async(std::launch::async, [&reply] { return reply.value(); });
    request.reset();
    EXPECT_FALSE(waiting.get().isValid());
}

TEST(CMRequestTest, IsKnownToTheMetaTypeSystemByItsName)
{
    EXPECT_NE(QMetaType::type("CMSetDataRequest"), int(QMetaType::UnknownType));
    EXPECT_NE(QMetaType::type("CMVoidReply"), int(QMetaType::UnknownType));
}

TEST(CMRequestDeathTest, HasNoValueWithoutData)
{
    EXPECT_DEATH(CMSetDataRequest().value(), "\"d\\(\\)\"");
    EXPECT_DEATH(CMMatchRowRequest().value(), "\"d\\(\\)\"");
}

TEST(CMRequestDeathTest, HasNoReplyWithoutData)
{
    EXPECT_DEATH(CMSetDataRequest().reply(), "\"d\\(\\)\"");
}

TEST(CMRequestDeathTest, HasNoPathAndNoRowsWithoutData)
{
    EXPECT_DEATH(CMRequest().path(), "\"d\\(\\)\"");
    EXPECT_DEATH(CMGetRowsRequest().first(), "\"d\\(\\)\"");
    EXPECT_DEATH(CMGetRowsRequest().count(), "\"d\\(\\)\"");
}
