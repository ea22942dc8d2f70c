// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/nodes/cmuinode.h"
#include "core/records/value.h"

#include <mutex>

/// A node whose value is made only when it is read, or when it changes and there are subscribers. For
/// values that change far more often than anybody reads them. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMComputedNode : public CMUINode
{
public:
    QString kind() const override;
    /// Replies with what makeValue() returns.
    void getData(const CMGetDataRequest &request) override;

protected:
    using CMUINode::CMUINode;

    /// Makes the value from the data of the derived class. Called in any thread, under guard().
    virtual TavoValue makeValue() const = 0;

    /// Calls the function, which changes the data, under guard(). Then reports the value to the
    /// subscribers from their event loops, each time and in the order of the changes.
    template <typename Function>
    void change(Function function)
    {
        const std::lock_guard lock(guard());
        function();
        report();
    }

private:
    void report() const;
};
