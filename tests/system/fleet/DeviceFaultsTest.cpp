// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"
#include "fleet/Device.h"
#include "support/FullDisk.h"
#include "support/Sanitized.h"

#include <atomic>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {
std::atomic<bool> isClockUnset{false};
} // namespace

// The definition in a program takes precedence over that of the C library, also for Qt, which reads the time of day
// by it.
extern "C" __attribute__((visibility("default"))) TAVO_NO_SANITIZER int
gettimeofday(timeval *time, void *) noexcept
{
    timespec now{};
    ::syscall(SYS_clock_gettime, CLOCK_REALTIME, &now);
    constexpr time_t sinceBoot = 100000;
    time->tv_sec = isClockUnset ? now.tv_sec % sinceBoot : now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}

/// A device in the test's process, whose clock and disk can fail.
class DeviceFaultsTest : public DeviceTest
{
protected:
    ~DeviceFaultsTest() override { isClockUnset = false; }

    void startOwnDevice()
    {
        forgetMessages();
        m_own.reset();
        m_own = std::make_unique<Own>(m_folder.filePath("fleet.json"),
                                      m_folder.filePath("fleet.db"), m_bus.address());
        m_own->device.start();
        ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "1"));
    }

private:
    struct Own
    {
        Own(const QString &file, const QString &storeFile, const QString &bus)
            : configuration(FleetConfiguration::fromFile(file))
            , store(storeFile)
            , device(configuration, bus, store)
        {
        }

        FleetConfiguration configuration;
        FleetStore store;
        Device device;
    };
    std::unique_ptr<Own> m_own;
};

TEST_F(DeviceFaultsTest, CallsSurviveThatTheClockIsSet)
{
    isClockUnset = true;
    startOwnDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    call(R"("id":"late","call":"show","title":"x","expires":1704067200001)");
    call(R"("id":"b","call":"nonsense")");
    ASSERT_TRUE(waitForAnswer(R"("id":"b")"));
    isClockUnset = false;
    call(R"("id":"c","call":"ping")");
    startHost();
    ASSERT_TRUE(waitForAnswer(R"("id":"c")"));
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    ASSERT_TRUE(waitForAnswer(R"("id":"late","shown":true)")) << "nobody knew";
    startOwnDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    EXPECT_EQ(openMessages().size(), 2) << "it was carried out again";
}

TEST_F(DeviceFaultsTest, OnAFullDiskNothingIsCarriedOutThatCannotBeRemembered)
{
    startHost();
    startOwnDevice();
    {
        const FullDisk fullDisk;
        call(R"("id":"a","call":"show","title":"Water","timeout":0)");
        ASSERT_TRUE(waitForAnswer(R"("error":"the device can't remember calls","id":"a")"));
    }
    EXPECT_TRUE(openMessages().isEmpty());
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    EXPECT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
}
