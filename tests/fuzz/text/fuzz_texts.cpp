// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Texts in the system: translatable texts from any value, log lines, signatures and the levels of
// the log.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"
#include "fuzz/support/Values.h"
#include <core/tavo.h>
#include <host/LogLevels.h>

namespace {
void checkTranslatable(const QVariant &value)
{
    const TrString text = TrString::fromQVariant(value);
    const QVariant carried = text;
    FUZZ_CHECK(isPlainData(carried) || !isPlainData(value), carried);
    const TrString again = TrString::fromQVariant(carried);
    FUZZ_CHECK(again.isTranslatable() == text.isTranslatable(), carried);
    FUZZ_CHECK(again.isEmpty() == text.isEmpty(), carried);
    FUZZ_CHECK(isSame(QVariant(again), carried), carried);
    FUZZ_CHECK(again.toString() == text.toString(), carried);
    FUZZ_CHECK(text.isTranslatable() || text.isEmpty() || text.toString() == carried.toString(),
               carried);
}

/// A value can neither break nor forge a log line.
void checkOneLine(const QVariant &value)
{
    std::ostringstream stream;
    stream << value;
    for (const char c : stream.str()) {
        const auto code = static_cast<unsigned char>(c);
        FUZZ_CHECK(code >= 0x20 && code != 0x7f, int(code));
    }
    // Other types may be written as nothing, such as an empty URL.
    FUZZ_CHECK(!stream.str().empty() || !isPlainData(value), "a value is written as an empty text");
}

void checkSignature(const QByteArray &signature)
{
    const QByteArray text = signature.constData(); // up to its first null, as a function sees it
    const QByteArray context = trExtractContext(text.constData());
    FUZZ_CHECK(!context.contains('('), context.constData());
    FUZZ_CHECK(text.contains(context), context.constData());
    // Only blanks move, and one name that compilers spell differently.
    const QByteArray rendered =
        QByteArray::fromStdString(dbglog_scopedFunction(signature.toStdString(), "Fuzz"));
    FUZZ_CHECK(signature.contains("anonymous") ||
                   QByteArray(rendered).replace(' ', "") == QByteArray(signature).replace(' ', ""),
               rendered.constData());
}

void checkLevel(const QString &text)
{
    const auto level = logLevelFromText(text);
    if (level) {
        FUZZ_CHECK(text.startsWith(level->logger), text);
        const QString name = text.mid(text.lastIndexOf(QLatin1Char('=')) + 1);
        FUZZ_CHECK(logLevelFromName(name) == level->level, text);
    }
}
} // namespace

void fuzzOne(ByteReader &input)
{
    ValueReader values(input);
    const QVariant value = values.value();
    checkTranslatable(value);
    checkOneLine(value);
    checkLevel(values.text());
    checkSignature(values.text().toUtf8());
    checkSignature(input.rest());
}
