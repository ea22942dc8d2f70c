// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "RecordFields.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

#include <sstream>

namespace {
QVariantHash throughJson(const QVariantHash &record)
{
    const QByteArray json = QJsonDocument::fromVariant(record).toJson();
    return QJsonDocument::fromJson(json).toVariant().toHash();
}
} // namespace

TEST(RecordFieldTest, ReadsAsTheDefaultWhenMissing)
{
    for (const RecordField *field : recordFields()) {
        EXPECT_TRUE(field->readsDefault({})) << field->name;
        EXPECT_TRUE(field->readsDefault({{"other", 1}})) << field->name;
    }
}

TEST(RecordFieldTest, ReadsAsTheDefaultWhenItsValueIsUnsuitable)
{
    for (const RecordField *field : recordFields()) {
        for (const QVariant &value : field->unsuitable) {
            EXPECT_TRUE(field->readsDefault({{field->key, value}}))
                << field->name << " of " << value;
        }
    }
}

TEST(RecordFieldTest, ReadsWhatWasSet)
{
    for (const RecordField *field : recordFields()) {
        EXPECT_TRUE(field->readsSample(field->withSample())) << field->name;
    }
}

TEST(RecordFieldTest, WritesItsKeyOnly)
{
    for (const RecordField *field : recordFields()) {
        EXPECT_EQ(field->withSample().keys(), QStringList{field->key}) << field->name;
    }
}

TEST(RecordFieldTest, HasASetterThatReturnsTheRecord)
{
    for (const RecordField *field : recordFields()) {
        EXPECT_TRUE(field->setterReturnsTheRecord()) << field->name;
    }
}

TEST(RecordFieldTest, IsTheSameAfterARequestHasCarriedIt)
{
    for (const RecordField *field : recordFields()) {
        const QVariant carried = TavoHash(field->withSample()).__variant();
        EXPECT_TRUE(field->readsSample(carried.toHash())) << field->name;
    }
}

TEST(RecordFieldTest, IsTheSameAfterItsWayThroughJson)
{
    for (const RecordField *field : recordFields()) {
        EXPECT_TRUE(field->readsSample(throughJson(field->withSample()))) << field->name;
    }
}

TEST(RecordFieldTest, IsCarriedAsPlainData)
{
    const QList<int> plainTypes{QMetaType::Bool,        QMetaType::Int,     QMetaType::LongLong,
                                QMetaType::Double,      QMetaType::QString, QMetaType::QVariantList,
                                QMetaType::QVariantHash};
    for (const RecordField *field : recordFields()) {
        const QVariant carried = field->withSample().value(field->key);
        EXPECT_TRUE(plainTypes.contains(carried.userType()))
            << field->name << ' ' << carried.typeName();
    }
}

// Bytes cannot be written as JSON, so the tests of all fields leave them out.
TEST(TavoImageTest, CarriesItsPixelsAsBytes)
{
    const QByteArray pixels("\0\x80\xff\1", 4);
    const TavoImage image = TavoImage().setPixels(pixels);
    EXPECT_EQ(image.pixels(), pixels);
    EXPECT_EQ(image.fields(), (QVariantHash{{"pixels", pixels}}));
    for (const QVariant &unsuitable : {QVariant(), QVariant("AAAA"), QVariant(7)}) {
        EXPECT_TRUE(TavoImage(QVariantHash{{"pixels", unsuitable}}).pixels().isEmpty());
    }
}

TEST(TavoRolesTest, TellNoProgressFromAProgressOfZero)
{
    EXPECT_FALSE(TavoRoles().setTitle("title").hasValue());
    EXPECT_TRUE(TavoRoles().setValue(0).hasValue());
}

TEST(TavoHashTest, IsEmptyUntilAFieldIsSet)
{
    EXPECT_TRUE(TavoHash().isEmpty());
    EXPECT_TRUE(TavoNotificationDisplayItem().isEmpty());
    EXPECT_FALSE(TavoNotificationDisplayItem().setTimeout(0).isEmpty());
}

TEST(TavoHashTest, KeepsFieldsThatARecordDoesNotKnow)
{
    const QVariantHash fields{{"id", "7"}, {"newer", QVariantList{1, 2}}};
    TavoNotificationPlayerItem item(fields);
    item.setId("8");
    EXPECT_EQ(item.__variant().toHash().value("newer"), QVariant(QVariantList{1, 2}));
    EXPECT_EQ(item.id(), "8");
}

TEST(TavoHashTest, KeepsUnknownFieldsOfARecordWithinARecord)
{
    const TavoValue value(QVariantHash{{"audioDevice", QVariantHash{{"newer", 1}}}});
    EXPECT_EQ(value.audioDevice().fields().value("newer"), QVariant(1));
}

TEST(TavoHashTest, ChainsItsSetters)
{
    const auto item = TavoNotificationPlayerItem().setId("a").setLoop(true).setContent("b");
    EXPECT_EQ(item.fields(), (QVariantHash{{"id", "a"}, {"loop", true}, {"content", "b"}}));
}

TEST(TavoHashTest, IsNotChangedThroughACopy)
{
    const TavoValue original = TavoValue().setInt_(1);
    TavoValue copy = original;
    copy.setInt_(2);
    EXPECT_EQ(original.int_(), 1);
}

TEST(TavoHashTest, IsEqualWhenItsFieldsAreEqual)
{
    EXPECT_TRUE(TavoValue().setInt_(1) == TavoValue().setInt_(1));
    EXPECT_TRUE(TavoValue().setInt_(1) != TavoValue().setInt_(2));
    EXPECT_TRUE(TavoValue().setInt_(0) != TavoValue());
    EXPECT_FALSE(TavoValue().setInt_(1) != TavoValue().setInt_(1));
}

TEST(TavoHashTest, ComesBackFromJsonEqual)
{
    for (const RecordField *field : recordFields()) {
        const TavoHash record(field->withSample());
        EXPECT_EQ(TavoHash(throughJson(record.fields())), record) << field->name;
    }
}

TEST(TavoHashTest, StaysDifferentThroughJson)
{
    const auto nested = [](int timeout) {
        return TavoValue().setNotificationDisplayItem(
            TavoNotificationDisplayItem().setTimeout(timeout));
    };
    EXPECT_NE(TavoHash(throughJson(nested(1).fields())), nested(2));
    EXPECT_NE(TavoHash(throughJson(nested(1).fields())), TavoValue());
}

TEST(TavoHashTest, IsWrittenToAStreamAsItsFields)
{
    std::ostringstream stream;
    stream << TavoValue().setString_("text").setInt_(5);
    EXPECT_EQ(stream.str(), "{int: 5, string: \"text\"}");
}

TEST(TavoHashTest, ReadsOtherValuesAsAnEmptyRecord)
{
    EXPECT_TRUE(TavoValue(QVariant(5).toHash()).notificationPlayerItem().isEmpty());
    EXPECT_TRUE(TavoValue(QVariant("text").toHash()).isEmpty());
}
