// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/seeds/SeedFolder.h"
#include "fuzz/seeds/Seeds.h"
#include "fuzz/support/Dictionary.h"
#include "fuzz/support/ValueWriter.h"
#include <core/tavo.h>

namespace {
/// Writes every field of every record, with a valid value and with an invalid one.
void writeRecords(const SeedFolder &folder)
{
    const QVariant samples[] = {true,
                                -3,
                                0.25,
                                QStringLiteral("a"),
                                QStringLiteral("/a/b"),
                                QVariant(QVariantList{2, 3}),
                                QVariant(QVariantHash())};
    for (int kind = 0; kind < int(FuzzRecord::Count); ++kind) {
        int shift = 0;
        for (const QVariant &first : {samples[0], samples[3]}) {
            ValueWriter record;
            record.byte(kind);
            for (std::size_t i = 0; i < fuzzFields(FuzzRecord(kind)).size(); ++i) {
                record.byte(int(FuzzFill::Any));
                record.value(i == 0 ? first
                                    : samples[(i + std::size_t(shift)) % std::size(samples)]);
            }
            record.value(QVariantList{1, QStringLiteral("2"), 2.0});
            folder.write("record-" + QByteArray::number(kind) + '-' + QByteArray::number(shift),
                         record.bytes());
            ++shift;
        }
    }
}

void writeTwoTexts(const SeedFolder &folder, const char *name, const QString &one,
                   const QString &other, const QByteArray &rest = {})
{
    ValueWriter writer;
    writer.text(one);
    writer.text(other);
    folder.write(name, writer.bytes() + rest);
}

void writePaths(const SeedFolder &folder)
{
    writeTwoTexts(folder, "canonical", QStringLiteral("/notifications/player"),
                  QStringLiteral("enqueue"));
    writeTwoTexts(folder, "sloppy", QStringLiteral("a//b/"), QStringLiteral("/c//d/"));
    writeTwoTexts(folder, "empty", QStringLiteral("/"), QString());
    ValueWriter wide;
    wide.byte(int(FuzzText::Wide));
    wide.byte(2);
    wide.number(quint32(0xd800002f));
    folder.write("half-surrogate", wide.bytes());
    ValueWriter huge;
    huge.byte(int(FuzzText::Huge));
    huge.number(quint16('/'));
    huge.byte(16);
    folder.write("slashes", huge.bytes());
}

void writeTexts(const SeedFolder &folder)
{
    const TrString text(TrCharData{"Context", "%1 of %2", "few", 2}, {TrArg(1), TrArg(2.5)});
    const auto write = [&folder](const char *name, const QVariant &value, const char *signature) {
        ValueWriter writer;
        writer.value(value);
        writer.text(QStringLiteral("Notifications=DEBUG"));
        writer.text(QString::fromLatin1(signature));
        folder.write(name, writer.bytes() + signature);
    };
    write("translatable", text, "void Class::slot(const CMPath&, int) const");
    write("plain", QStringLiteral("a\nb"), "std::vector<QString> (anonymous namespace)::f(T *)");
    write("number", 7, "int main()");
    write("hash", QVariantHash{{QStringLiteral("source"), 3}},
          "T &operator<<(T &, QString const &)");
}

void writeMediaTypes(const SeedFolder &folder)
{
    const char *types[] = {"audio/L16;rate=48000;channels=2",
                           "audio/L8;rate=8000",
                           "audio/L24; rate=\"96000\"; channels=32",
                           "audio/x-raw;format=F32LE;rate=44100",
                           "audio/x-raw;format=S32BE;rate=44100",
                           "audio/ogg; codecs=opus",
                           "audio/unknown"};
    const char *places[] = {"/sounds/bell.wav",
                            "file:///sounds/a%20b.wav",
                            "http://[::1]:80/bell.wav",
                            "https://user@127.0.0.1/x?y#z",
                            "file://elsewhere/x",
                            "ftp://127.0.0.1/x",
                            "12:30.wav"};
    for (std::size_t i = 0; i < std::size(types); ++i) {
        const QByteArray name = "type-" + QByteArray::number(int(i));
        writeTwoTexts(folder, name.constData(), QString::fromLatin1(types[i]),
                      QString::fromLatin1(places[i]),
                      QByteArray("\x00\x7f\x80\xff\x01\x02\x03\x04", 8));
    }
}
} // namespace

void writeValueSeeds(const QString &corpus)
{
    writeRecords(SeedFolder(corpus, "fuzz_records"));
    writePaths(SeedFolder(corpus, "fuzz_paths"));
    writeTexts(SeedFolder(corpus, "fuzz_texts"));
    writeMediaTypes(SeedFolder(corpus, "fuzz_media_types"));
}
