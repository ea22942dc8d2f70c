// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The nodes of the notifications module that take requests, as inputs number them.
enum class NotificationsNode { Enqueue, Cancel, Open, CancelNotify, Revoke, Count };

/// What happens to the module, as inputs number it; new steps go before Count.
enum class NotificationsStep {
    Request,    // node, value
    AtOnce,     // count less one, then a node and a value each
    CloseNode,  // which of the known paths
    ChangeRows, // which, a value: the changes
    EndPlayer,  // which, how
    FailPlay,   // text: the id
    FireTimer,  // whose
    SetDucking, // 0 accept, 1 refuse, 2 keep
    SetResources,
    AnswerKept, // which, 0 to accept
    Count
};
