// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/nodes/cmnode.h"

/// A node that user interfaces may show. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMUINode : public CMNode
{
public:
    /// Sets the title. Called in the worker's thread.
    void setTitle(const TrString &title);
    TrString title() const override;

protected:
    /// Called by the kinds.
    using CMNode::CMNode;

private:
    TrString m_title;
};
