// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The nodes of the notifications module that take requests, by their numbers in inputs.
enum class NotificationsNode { Enqueue, Cancel, Open, CancelNotify, Revoke, Count };

/// Events around the module, by their numbers in inputs. New ones go before Count.
enum class NotificationsStep {
    Request,    // node, value
    AtOnce,     // count - 1, then a node and a value for each
    CloseNode,  // which known path
    ChangeRows, // which path, a value: the changes
    EndPlayer,  // which player, how it ends
    FailPlay,   // string: the id
    FireTimer,  // whose timer
    SetDucking, // 0 accept, 1 refuse, 2 keep
    SetResources,
    AnswerKept, // which request, 0 to accept
    Count
};
