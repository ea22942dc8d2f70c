// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The host's configuration: any text as JSON. It gives a configuration that can be used, or an error
// that says what is wrong and where.

#include "fuzz/support/Fuzz.h"

#include <core/tavo.h>
#include <host/HostConfiguration.h>

#include <QJsonDocument>
#include <QSet>

namespace {
const QString file = QStringLiteral("/etc/tavo/tavo-host.json");

void checkError(const ConfigurationError &error)
{
    FUZZ_CHECK(!error.reason.isEmpty(), error.key);
    FUZZ_CHECK(error.file == file, error.file);
    FUZZ_CHECK(error.text().startsWith(file) && error.text().endsWith(error.reason), error.text());
    FUZZ_CHECK(!error.isSyntaxError || !error.key.isEmpty(), error.reason);
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

// Qt's parser loses objects: one whose key comes twice, and one that holds where it breaks off. It is
// used once in a host's life, and what stands above it has values only.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

void fuzzOne(ByteReader &input)
{
    const QByteArray json = input.rest();
    QJsonParseError error;
    QJsonDocument::fromJson(json, &error);
    const HostConfiguration::Result result = HostConfiguration::fromJson(json, file);
    if (const auto *mistake = std::get_if<ConfigurationError>(&result)) {
        FUZZ_CHECK(mistake->isSyntaxError == (error.error != QJsonParseError::NoError),
                   json.size());
        checkError(*mistake);
    } else {
        checkConfiguration(std::get<HostConfiguration>(result));
    }
}
