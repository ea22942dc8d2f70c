// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"
#include "core/records/enumerations.h"
#include "core/records/tavohash.h"
#include "core/records/tavolist.h"

/// Request: makes a module known to the power manager. Value: a TavoPowerManagerModuleRegister.
TAVO_API_EXPORT CMPath TavoPowerManagerModuleRegisterPath();

/// Request: acquires or releases a resource. Value: a TavoPowerManagerResourceRequest. Answer:
/// empty when granted, an error when refused.
TAVO_API_EXPORT CMPath TavoPowerManagerResourceRequestPath();

/// Request: revokes what everybody holds and refuses new grants from now on. The value is not read.
/// Answer: empty, once every holder has stopped or the time for it is over; an error when a resume
/// came before that.
TAVO_API_EXPORT CMPath TavoPowerManagerStandbyPath();

/// Request: ends standby, also one that is still under way. The value is not read. Answer: empty.
TAVO_API_EXPORT CMPath TavoPowerManagerResumePath();

/// Value: a TavoValue with powerManagerState().
TAVO_API_EXPORT CMPath TavoPowerManagerStatePath();

/// Tells the power manager where a module takes its messages.
class TavoPowerManagerModuleRegister : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerModuleRegister)

    TAVO_FIELD(QString, moduleName, setModuleName)
    /// Takes the message that resources are revoked; answered once the module has taken it up.
    TAVO_FIELD(CMPath, revokeResourcesPath, setRevokeResourcesPath)
    /// Takes the notice after everybody has answered.
    TAVO_FIELD(CMPath, postRevokeResourcesPath, setPostRevokeResourcesPath)
};

/// Asks for a resource, or gives it back.
class TavoPowerManagerResourceRequest : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerResourceRequest)

    TAVO_FIELD(QString, moduleName, setModuleName)
    TAVO_FIELD(TavoPowerManagerResources::Enum, resource, setResource)
    TAVO_FIELD(TavoPowerModuleActions::Enum, action, setAction)
};

/// Sent to a module whose resources are revoked.
class TavoPowerManagerRevokeMessage : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerRevokeMessage)

    TAVO_FIELD(TavoPowerManagerRevokeMessageType::Enum, messageType, setMessageType)
    TAVO_FIELD(TavoList<TavoPowerManagerResources::Enum>, revokeResources, setRevokeResources)
};

/// Who holds a resource.
class TavoPowerManagerResourceHolders : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerResourceHolders)

    TAVO_FIELD(TavoPowerManagerResources::Enum, resource, setResource)
    /// The modules' names, sorted.
    TAVO_FIELD(TavoList<QString>, holders, setHolders)
};

/// What the power manager knows and has granted.
class TavoPowerManagerState : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerState)

    /// True from the request on, while holders are still stopping.
    TAVO_FIELD(bool, standby, setStandby)
    /// The registered modules' names, sorted.
    TAVO_FIELD(TavoList<QString>, modules, setModules)
    /// The resources that somebody holds, in the order of their numbers.
    TAVO_FIELD(TavoList<TavoPowerManagerResourceHolders>, resources, setResources)
};
