// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ModuleThread.h"

#include "core/model/cmrequest.h"
#include "core/model/cmworker.h"
#include "host/ExitCode.h"

#include <gtest/gtest.h>

#include <thread>

namespace {
class HangingWorker : public CMWorker
{
public:
    ~HangingWorker() override { std::this_thread::sleep_for(std::chrono::seconds(60)); }
    void request(CMRequest /*request*/) override {}
};

void *createHanging(const char * /*name*/, void * /*config*/)
{
    CMWorker *worker = new HangingWorker;
    return worker;
}

void startAndStop(std::chrono::milliseconds limit)
{
    ModuleThread thread({QStringLiteral("hanging"), {}, {}}, createHanging);
    thread.startWorker();
    thread.stopWorker(limit);
}

TEST(ModuleThreadTest, EndsTheProcessWhenItsWorkerHangs)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr std::chrono::milliseconds limit{100};
    EXPECT_EXIT(startAndStop(limit), testing::ExitedWithCode(int(ExitCode::WorkerFailed)), "");
}
} // namespace
