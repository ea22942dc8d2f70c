// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CrowdTest.h"

TEST_F(CrowdTest, RequestsOfEightThreadsAreAnsweredOnceAndTheirSoundsEndOnce)
{
    startModules({"powermanager", playerModule(), "notifications", crowd(), m_requester.module()});
    constexpr int each = sanitized ? 200 : 1000;
    run({{"threads", 8}, {"count", each}}, "mix");
    // The power manager does not know of the revokes that the crowd sends, so its grants and the
    // notifications may differ. The next sound settles that.
    expectPlays("afterwards");
    expectSettled();
    EXPECT_EQ(stopHost(), 0);
}
