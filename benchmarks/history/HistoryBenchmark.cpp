// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Fills a history, in a folder that is removed again, and measures it. Prints a JSON object of names and
// figures: medians, and milliseconds if the name says nothing else.

#include "../Moment.h"
#include "modules/attention/history/History.h"
#include "modules/attention/history/HistoryFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <random>
#include <vector>

namespace {
constexpr int repetitions = 11;
constexpr int words = 20000;
constexpr int wordsPerText = 12;
constexpr int sources = 50;

/// Texts as people write them: a few words are in most of them, and most words are in few.
class Entries
{
public:
    Entries()
    {
        const char *const syllables[] = {"ka", "lo", "mi", "ne",  "ru",  "ta",  "so",
                                         "vi", "pe", "du", "ban", "tor", "gel", "fim"};
        for (int i = 0; i < words; ++i) {
            QString word;
            for (int left = number(1, 4); left > 0; --left) {
                word += QLatin1String(syllables[number(0, 13)]);
            }
            m_words.push_back(word);
        }
    }

    HistoryEntry next()
    {
        HistoryEntry entry;
        entry.number = ++m_count;
        entry.id = QString::number(m_count);
        entry.time = QDateTime::currentMSecsSinceEpoch();
        const QString source = QString::number(m_count % sources);
        entry.source = QLatin1String("org.example.program") + source;
        entry.application = QLatin1String("Program ") + source;
        entry.title = QLatin1String("Message ") + word();
        for (int i = 0; i < wordsPerText; ++i) {
            entry.text += word() + QLatin1Char(' ');
        }
        entry.state = m_count % 100 == 0 ? HistoryEntry::State::Expired : HistoryEntry::State::Seen;
        entry.endTime = entry.time;
        return entry;
    }

    qint64 count() const { return m_count; }

private:
    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }

    const QString &word()
    {
        const double chance = std::uniform_real_distribution<double>(0, 1)(m_random);
        return m_words[std::size_t(std::pow(double(words), chance)) - 1];
    }

    std::mt19937 m_random; // the same numbers each time
    std::vector<QString> m_words;
    qint64 m_count = 0;
};

double msSince(std::int64_t start)
{
    return double(momentNow() - start) * 1e-6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double medianOf(const std::function<void()> &function)
{
    std::vector<double> times;
    for (int i = 0; i < repetitions; ++i) {
        const std::int64_t start = momentNow();
        function();
        times.push_back(msSince(start));
    }
    return median(times);
}

void read(History &history, const HistoryQuery &query)
{
    QEventLoop loop;
    history.page(query, [&](const Result<HistoryPage> &page) {
        if (const auto *failure = std::get_if<Failure>(&page)) {
            qFatal("%s", qPrintable(failure->reason));
        }
        loop.quit();
    });
    loop.exec();
}

HistoryQuery searchFor(const char *text)
{
    HistoryQuery query;
    query.text = QLatin1String(text);
    return query;
}

/// A figure of this process, from a file below /proc/self.
double processFigure(const char *file, const char *name)
{
    QFile figures(QLatin1String("/proc/self/") + QLatin1String(file));
    if (figures.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : figures.readAll().split('\n')) {
            if (line.startsWith(name)) {
                return line.mid(line.indexOf(':') + 1).simplified().split(' ').first().toDouble();
            }
        }
    }
    return -1;
}

void print(const char *name, double value, bool isLast = false)
{
    std::printf("  \"%s\": %.4g%s\n", name, value, isLast ? "" : ",");
    std::fflush(stdout);
}

void fill(const HistorySettings &settings, Entries &entries, int count)
{
    constexpr int perTransaction = 5000;
    HistoryFile file(settings.file, settings);
    while (entries.count() < count) {
        for (int i = 0; i < perTransaction && entries.count() < count; ++i) {
            file.apply(entries.next());
        }
        file.commit();
    }
}

double startTime(const HistorySettings &settings)
{
    return medianOf([&] {
        History history(settings);
        read(history, {});
    });
}

/// In transactions of so many entries. The history waits for a thousand in a flood.
void measureWrites(const HistorySettings &settings, Entries &entries, int perTransaction)
{
    constexpr int count = 4000;
    const int transactions = count / perTransaction;
    HistoryFile file(settings.file, settings);
    std::vector<double> times;
    std::vector<double> processorTimes;
    const double bytes = processFigure("io", "write_bytes");
    for (int i = 0; i < transactions; ++i) {
        std::vector<HistoryEntry> batch;
        for (int j = 0; j < perTransaction; ++j) {
            batch.push_back(entries.next());
        }
        const std::int64_t start = momentNow();
        const std::clock_t processorStart = std::clock();
        for (const HistoryEntry &entry : batch) {
            file.apply(entry);
        }
        file.commit();
        processorTimes.push_back(double(std::clock() - processorStart));
        times.push_back(msSince(start));
    }
    static_assert(CLOCKS_PER_SEC == 1'000'000);
    const QByteArray name = "writtenEntryOf" + QByteArray::number(perTransaction);
    print(name + "ProcessorMicroseconds", median(processorTimes) / perTransaction);
    print(name + "Microseconds", median(times) * 1000 / perTransaction);
    print(name + "DiskBytes", (processFigure("io", "write_bytes") - bytes) / count);
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 1'000'000;
    const QTemporaryDir folder(QCoreApplication::applicationDirPath() +
                               QLatin1String("/history-XXXXXX"));
    HistorySettings settings;
    settings.file = folder.filePath(QStringLiteral("history.db"));
    settings.maxEntries = 2 * count;
    settings.maxBytes = qint64(1) << 40;
    Entries entries;

    std::printf("{\n");
    print("entries", count);
    const std::int64_t start = momentNow();
    fill(settings, entries, count);
    print("fillSeconds", msSince(start) / 1000);
    print("fileBytesPerEntry", double(QFileInfo(settings.file).size()) / count);
    constexpr int few = 20;
    constexpr int many = 1000;
    measureWrites(settings, entries, few);
    measureWrites(settings, entries, many);

    const double memory = processFigure("status", "VmRSS");
    print("start", startTime(settings));
    {
        History history(settings);
        print("newestPage", medianOf([&] { read(history, {}); }));
        HistoryQuery query;
        query.limit = HistoryQuery::maxLimit;
        print("newestPageOf200", medianOf([&] { read(history, query); }));
        query = {};
        query.before = count / 2;
        print("pageInTheMiddle", medianOf([&] { read(history, query); }));
        query = {};
        query.onlyMissed = true;
        print("pageOfMissed", medianOf([&] { read(history, query); }));
        query = {};
        query.source = QStringLiteral("org.example.program7");
        print("pageOfSource", medianOf([&] { read(history, query); }));
        for (const char *text :
             {"m", "me", "mes", "message", "message ka", "ka lo mi", "kalomine", "zzz"}) {
            print((QByteArray("search ") + text).constData(),
                  medianOf([&] { read(history, searchFor(text)); }));
        }
        query = searchFor("message");
        query.onlyMissed = true;
        print("searchInMissed", medianOf([&] { read(history, query); }));
        HistoryEntry entry = entries.next();
        constexpr int adds = 1000;
        print("addMicroseconds", medianOf([&] {
                  for (int i = 0; i < adds; ++i) {
                      history.add(entry);
                  }
              }));
    }
    print("memoryKiB", processFigure("status", "VmRSS") - memory, true);
    std::printf("}\n");
    return 0;
}
