// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

// The platform header: the one include of a module.

#include "core/model/cmabstractworker.h"
#include "core/model/cmcatalog.h"
#include "core/model/cmerror.h"
#include "core/model/cmreply.h"
#include "core/model/cmrequest.h"
#include "core/model/cmroot.h"
#include "core/model/cmsubscribe.h"
#include "core/model/nodes/cmactivatenode.h"
#include "core/model/nodes/cmlistrowsnode.h"
#include "core/model/nodes/cmnodes.h"
#include "core/model/nodes/cmnodesworker.h"
#include "core/model/nodes/cmvaluenode.h"
#include "core/tavo/cmpath.h"
#include "core/tavo/configuration.h"
#include "core/tavo/connect.h"
#include "core/tavo/dbglog.h"
#include "core/tavo/enumerations.h"
#include "core/tavo/export.h"
#include "core/tavo/notifications.h"
#include "core/tavo/player.h"
#include "core/tavo/powermanager.h"
#include "core/tavo/rows.h"
#include "core/tavo/stream.h"
#include "core/tavo/tavohash.h"
#include "core/tavo/tavolist.h"
#include "core/tavo/trstring.h"
#include "core/tavo/uuid.h"
#include "core/tavo/value.h"
