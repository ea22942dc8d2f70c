// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

// The platform header: the one include of a module.

#include "core/base/configuration.h"
#include "core/base/connect.h"
#include "core/base/dbglog.h"
#include "core/base/export.h"
#include "core/base/numbers.h"
#include "core/base/stream.h"
#include "core/base/trstring.h"
#include "core/base/uuid.h"
#include "core/model/cmabstractworker.h"
#include "core/model/cmcatalog.h"
#include "core/model/cmendpoint.h"
#include "core/model/cmerror.h"
#include "core/model/cmreconfigurable.h"
#include "core/model/cmreply.h"
#include "core/model/cmrequest.h"
#include "core/model/cmroot.h"
#include "core/model/cmsubscribe.h"
#include "core/model/nodes/cmactivatenode.h"
#include "core/model/nodes/cmcomputednode.h"
#include "core/model/nodes/cmlistrowsnode.h"
#include "core/model/nodes/cmnodes.h"
#include "core/model/nodes/cmnodesworker.h"
#include "core/model/nodes/cmvaluenode.h"
#include "core/records/cmpath.h"
#include "core/records/enumerations.h"
#include "core/records/notifications.h"
#include "core/records/player.h"
#include "core/records/powermanager.h"
#include "core/records/rows.h"
#include "core/records/tavohash.h"
#include "core/records/tavolist.h"
#include "core/records/value.h"
