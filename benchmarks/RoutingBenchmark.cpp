// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Measures a request routed to one of many nodes, and a change reported to many subscribers.

#include <core/tavo.h>

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace {
class Target : public CMNodesWorker
{
public:
    Target()
        : CMNodesWorker({}, QStringLiteral("Target"))
    {
    }

    CMPath add(int number)
    {
        const CMPath path = CMPath(QStringLiteral("/benchmark/nodes")) + QString::number(number);
        CMActivateNode::create(nodes(), path)
            ->setInvoke(this, &Target::on_request, Qt::DirectConnection);
        return path;
    }

    CMListRowsNode *addList(const CMPath &path) { return CMListRowsNode::create(nodes(), path); }

private:
    void on_request(const CMSetDataRequest &request) { request.reply().setValue(QVariant()); }
};

void route(benchmark::State &state)
{
    Target target;
    std::vector<CMPath> paths;
    for (int i = 0; i < int(state.range(0)); ++i) {
        paths.push_back(target.add(i));
    }
    std::minstd_rand random(1);
    // Sends to only ten of the nodes, chosen at random, so that the look-up is measured and not the
    // processor's cache.
    std::shuffle(paths.begin(), paths.end(), random);
    std::size_t next = 0;
    for ([[maybe_unused]] auto unused : state) {
        CMRoot()->invoke(paths[next], QVariant(), CMReply<QVariant>());
        next = (next + 1) % 10;
    }
}

class Watcher : public QObject
{
public:
    void on_rowsChanged(const CMPath & /*path*/, const QStringList & /*changes*/, int, int)
    {
        ++reported;
    }
    int reported = 0;
};

void tellRows(benchmark::State &state)
{
    Target target;
    const CMPath path(QStringLiteral("/benchmark/rows"));
    CMListRowsNode *list = target.addList(path);
    std::vector<std::unique_ptr<Watcher>> watchers;
    for (int i = 0; i < int(state.range(0)); ++i) {
        watchers.push_back(std::make_unique<Watcher>());
        CMRoot()->connectRowsChange(path, watchers.back().get(), &Watcher::on_rowsChanged,
                                    Qt::AutoConnection);
    }
    for ([[maybe_unused]] auto unused : state) {
        list->rowsInsert(0, path);
        QCoreApplication::processEvents();
        list->rowsRemoveAt(0);
        QCoreApplication::processEvents();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}

BENCHMARK(route)->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(tellRows)->Arg(1)->Arg(10)->Arg(1000);
} // namespace
