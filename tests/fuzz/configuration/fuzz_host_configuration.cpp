// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The host's configuration: any text as JSON. The result is a valid configuration, or an error that
// says what is wrong and where.

#include "fuzz/support/Fuzz.h"
#include <core/tavo.h>
#include <host/HostConfiguration.h>

#include <QJsonDocument>
#include <QSet>

#include <stdexcept>

namespace {
const QString file = QStringLiteral("/etc/tavo/tavo-host.json");

/// A JSON error names line and column; any other error names a key, or has only a reason.
void checkError(const QString &text, bool isSyntaxError)
{
    FUZZ_CHECK(text.startsWith(file + QLatin1Char(':')), text);
    const QString rest = text.mid(file.size() + 1);
    FUZZ_CHECK(rest.startsWith(QLatin1Char(' ')) != isSyntaxError, text);
    FUZZ_CHECK(!rest.trimmed().isEmpty(), text);
}

void checkName(const QString &name)
{
    FUZZ_CHECK(!name.isEmpty() && !name.contains(QLatin1Char('/')) &&
                   !name.contains(QLatin1Char('\n')) && !name.startsWith(QLatin1Char('.')),
               name);
}

void checkConfiguration(const HostConfiguration &configuration)
{
    FUZZ_CHECK(configuration.source == file, configuration.source);
    FUZZ_CHECK(!configuration.modules.isEmpty(), "a host without modules");
    QSet<QString> names;
    for (const ModuleEntry &module : configuration.modules) {
        checkName(module.name);
        FUZZ_CHECK(!names.contains(module.name), module.name);
        names.insert(module.name);
        if (!module.libraryName.startsWith(QLatin1Char('/'))) {
            checkName(module.libraryName);
        }
        std::ostringstream line;
        line << QVariant(module.config);
    }
    for (const QString &folder : configuration.modulePath) {
        FUZZ_CHECK(folder.startsWith(QLatin1Char('/')), folder);
    }
    FUZZ_CHECK(configuration.log.file.isEmpty() ||
                   configuration.log.file.startsWith(QLatin1Char('/')),
               configuration.log.file);
}
} // namespace

// Qt's JSON parser leaks objects if a key comes twice, or if the text ends within an object. The
// host uses it once in its life, and the code around it has only values, so leaks do not count
// here.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

void fuzzOne(ByteReader &input)
{
    const QByteArray json = input.rest();
    QJsonParseError error;
    QJsonDocument::fromJson(json, &error);
    try {
        checkConfiguration(HostConfiguration::fromJson(json, file));
        FUZZ_CHECK(error.error == QJsonParseError::NoError, json.size());
    } catch (const std::runtime_error &mistake) {
        checkError(QString::fromStdString(mistake.what()), error.error != QJsonParseError::NoError);
    }
}
