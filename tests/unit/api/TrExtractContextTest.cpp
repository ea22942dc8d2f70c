// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/stream.h"
#include "core/base/trstring.h"

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {
class ContextTeller : public QTranslator
{
public:
    ContextTeller() { QCoreApplication::installTranslator(this); }
    ~ContextTeller() override { QCoreApplication::removeTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char * /*source*/, const char * /*disambiguation*/,
                      int /*count*/) const override
    {
        return QString::fromUtf8(context);
    }
};
} // namespace

namespace outer {
class Speaker
{
public:
    TrString text() { return TAVO_TR("text"); }
};
} // namespace outer

TEST(TrExtractContextTest, ReturnsTheClassOfAMemberFunction)
{
    EXPECT_EQ(trExtractContext("void NotificationsWorker::on_notificationDisplayEnqueue_activated("
                               "const CMSetDataRequest&)"),
              "NotificationsWorker");
    EXPECT_EQ(trExtractContext("virtual bool A::f(int) const"), "A");
    EXPECT_EQ(trExtractContext("static void A::f()"), "A");
}

TEST(TrExtractContextTest, IncludesTheScopesOfTheClass)
{
    EXPECT_EQ(trExtractContext("void outer::inner::A::f(b::C)"), "outer::inner::A");
}

TEST(TrExtractContextTest, ReturnsTheClassOfConstructorsAndDestructors)
{
    EXPECT_EQ(trExtractContext("A::A(QObject*)"), "A");
    EXPECT_EQ(trExtractContext("virtual A::~A()"), "A");
}

TEST(TrExtractContextTest, IgnoresTheReturnType)
{
    EXPECT_EQ(trExtractContext("b::C* A::f()"), "A");
    EXPECT_EQ(trExtractContext("b::C *A::f()"), "A");
    EXPECT_EQ(trExtractContext("const b::C &A::f()"), "A");
    EXPECT_EQ(trExtractContext("QHash<QString, b::C> A::f()"), "A");
}

TEST(TrExtractContextTest, IgnoresTheArguments)
{
    EXPECT_EQ(trExtractContext("void A::f(void (*)(b::C::D))"), "A");
    EXPECT_EQ(trExtractContext("bool A::operator()(b::C) const"), "A");
}

TEST(TrExtractContextTest, IsEmptyForAFreeFunction)
{
    EXPECT_EQ(trExtractContext("int main(int, char**)"), QByteArray());
    EXPECT_EQ(trExtractContext("main"), QByteArray());
    EXPECT_EQ(trExtractContext(""), QByteArray());
}

TEST(TrExtractContextTest, IsTheContextOfTheTranslationMacro)
{
    const ContextTeller teller;
    EXPECT_EQ(outer::Speaker().text().toString(), "outer::Speaker");
}
