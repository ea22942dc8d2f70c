// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/nodes/cmnode.h"

/// A node that user interfaces may show. Thread and owner: as CMNode.
class TAVO_API_EXPORT CMUINode : public CMNode
{
public:
    void setTitle(const TrString &title);
    TrString title() const override;

protected:
    using CMNode::CMNode;

private:
    TrString m_title;
};
