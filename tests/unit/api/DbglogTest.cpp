// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/dbglog.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbglog");
int evaluations = 0;

int evaluated(int value)
{
    ++evaluations;
    return value;
}
} // namespace

class Traced
{
public:
    void plain(int number)
    {
        TAVO_SCOPE(logger, TRACE, "number: " << evaluated(number));
        LOG4CPLUS_TRACE(logger, "inside");
    }
    void leaving(const QString &text, int *count)
    {
        TAVO_SCOPE(logger, DEBUG, text);
        ++*count;
        TAVO_LEAVE(DEBUG, "count: " << evaluated(*count));
    }
    bool refusing()
    {
        TAVO_SCOPE(logger, TRACE, "");
        TAVO_LEAVE(WARN, "refused");
        return false;
    }
    void lowering()
    {
        TAVO_SCOPE(logger, INFO, "");
        TAVO_LEAVE(TRACE, "nothing to see");
    }
    void changingItsMind()
    {
        TAVO_SCOPE(logger, TRACE, "");
        TAVO_LEAVE(WARN, "first");
        TAVO_LEAVE(INFO, "second");
    }
};

class DbglogScopeTest : public testing::Test
{
protected:
    void SetUp() override { evaluations = 0; }

    LogCapture log{"Dbglog"};
    Traced traced;
};

TEST_F(DbglogScopeTest, WritesEnterAndLeaveAroundAFunction)
{
    traced.plain(5);
    EXPECT_THAT(log.messages(), ElementsAre("Enter void Traced::plain(int): number: 5", "inside",
                                            "Leave void Traced::plain(int): "));
}

TEST_F(DbglogScopeTest, WritesAtItsLevel)
{
    traced.plain(5);
    EXPECT_EQ(log.countAt(log4cplus::TRACE_LOG_LEVEL), 3);
    log.clear();
    int count = 0;
    traced.leaving("a", &count);
    EXPECT_EQ(log.countAt(log4cplus::DEBUG_LOG_LEVEL), 2);
}

TEST_F(DbglogScopeTest, WritesTheGivenTextWhenItLeaves)
{
    int count = 1;
    traced.leaving("some text", &count);
    EXPECT_THAT(log.messages(),
                ElementsAre("Enter void Traced::leaving(const QString&, int*): some text",
                            "Leave void Traced::leaving(const QString&, int*): count: 2"));
}

TEST_F(DbglogScopeTest, LeavesAtTheGivenLevel)
{
    traced.refusing();
    EXPECT_EQ(log.count(log4cplus::TRACE_LOG_LEVEL, "Enter bool Traced::refusing(): "), 1);
    EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL, "Leave bool Traced::refusing(): refused"), 1);
}

TEST_F(DbglogScopeTest, WritesLeaveAtAnEnabledLevelAfterADisabledEnter)
{
    log.setLevel(log4cplus::WARN_LOG_LEVEL);
    traced.refusing();
    EXPECT_THAT(log.messages(), ElementsAre("Leave bool Traced::refusing(): refused"));
}

TEST_F(DbglogScopeTest, WritesNoLeaveAtADisabledLevel)
{
    log.setLevel(log4cplus::INFO_LOG_LEVEL);
    traced.lowering();
    EXPECT_THAT(log.messages(), ElementsAre("Enter void Traced::lowering(): "));
}

TEST_F(DbglogScopeTest, WritesTheTextThatWasGivenLast)
{
    traced.changingItsMind();
    EXPECT_EQ(log.count(log4cplus::INFO_LOG_LEVEL, "Leave void Traced::changingItsMind(): second"),
              1);
    EXPECT_EQ(log.records().size(), 2U);
}

TEST_F(DbglogScopeTest, EvaluatesNothingWhenDisabled)
{
    log.setLevel(log4cplus::WARN_LOG_LEVEL);
    int count = 0;
    traced.plain(5);
    traced.leaving("a", &count);
    EXPECT_EQ(evaluations, 0);
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(DbglogScopeTest, CarriesTheSameFileAndFunctionInBothLines)
{
    traced.plain(5);
    const LogCapture::Records records = log.records();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].fileName(), "DbglogTest.cpp");
    EXPECT_EQ(records[2].fileName(), "DbglogTest.cpp");
    EXPECT_EQ(records[0].line, records[2].line);
    EXPECT_EQ(records[0].function, records[2].function);
}

namespace {
std::string rendered(const std::string &signature)
{
    return dbglog_scopedFunction(signature, "Dbglog");
}
} // namespace

TEST(DbglogScopedFunctionTest, KeepsAPlainSignature)
{
    EXPECT_EQ(rendered("void A::f(int, bool)"), "void A::f(int, bool)");
    EXPECT_EQ(rendered("virtual bool A::f() const"), "virtual bool A::f() const");
    EXPECT_EQ(rendered("A::~A()"), "A::~A()");
    EXPECT_EQ(rendered(""), "");
}

TEST(DbglogScopedFunctionTest, RendersTheFormsOfBothCompilersEqually)
{
    const std::vector<std::pair<std::string, std::string>> forms{
        {"void A::f(const B&)", "void A::f(const B &)"},
        {"void A::f(const B&, int)", "void A::f(const B &, int)"},
        {"void A::f(B&&)", "void A::f(B &&)"},
        {"B* A::f(B*)", "B *A::f(B *)"},
        {"const B& A::f()", "const B &A::f()"},
        {"const B* const& A::f()", "const B *const &A::f()"},
        {"int main(int, char**)", "int main(int, char **)"},
        {"void A::f(QHash<QString, QList<int> >)", "void A::f(QHash<QString, QList<int>>)"},
        {"void {anonymous}::A::f()", "void (anonymous namespace)::A::f()"},
    };
    for (const auto &[first, second] : forms) {
        EXPECT_EQ(rendered(first), rendered(second));
    }
}

TEST(DbglogScopedFunctionTest, AttachesPointersAndReferencesToTheType)
{
    EXPECT_EQ(rendered("B *A::f(const C &, D **)"), "B* A::f(const C&, D**)");
}

TEST(DbglogScopedFunctionTest, KeepsWhatOnlyLooksLikeAPointerOrATemplate)
{
    EXPECT_EQ(rendered("bool operator >(A, B)"), "bool operator >(A, B)");
    EXPECT_EQ(rendered(" f() "), " f() ");
    EXPECT_EQ(rendered("A*"), "A*");
    EXPECT_EQ(rendered("int *_f()"), "int* _f()");
}
