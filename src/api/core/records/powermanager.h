// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"
#include "core/records/enumerations.h"
#include "core/records/tavohash.h"
#include "core/records/tavolist.h"

/// Request: registers a module with the power manager. Value: a TavoPowerManagerModuleRegister.
TAVO_API_EXPORT CMPath TavoPowerManagerModuleRegisterPath();

/// Request: acquires or releases a resource. Value: a TavoPowerManagerResourceRequest. Reply: empty
/// if granted, an error if refused.
TAVO_API_EXPORT CMPath TavoPowerManagerResourceRequestPath();

/// Request: revokes all grants and refuses new ones. The value is not read. Reply: empty, once
/// every holder has stopped or the timeout has passed; an error if a resume comes before that.
TAVO_API_EXPORT CMPath TavoPowerManagerStandbyPath();

/// Request: ends standby, even if holders are still stopping. The value is not read. Reply: empty.
TAVO_API_EXPORT CMPath TavoPowerManagerResumePath();

/// Value: a TavoValue with powerManagerState().
TAVO_API_EXPORT CMPath TavoPowerManagerStatePath();

/// The paths at which a module takes the messages of the power manager.
class TavoPowerManagerModuleRegister : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerModuleRegister)

    /// The module's name, by which it is known from then on.
    TAVO_FIELD(QString, moduleName, setModuleName)
    /// Takes the message that resources are revoked. The module replies once it has stopped.
    TAVO_FIELD(CMPath, revokeResourcesPath, setRevokeResourcesPath)
    /// Takes the notice that all modules have replied or the timeout has passed.
    TAVO_FIELD(CMPath, postRevokeResourcesPath, setPostRevokeResourcesPath)
};

/// Acquires or releases a resource.
class TavoPowerManagerResourceRequest : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerResourceRequest)

    /// A registered module.
    TAVO_FIELD(QString, moduleName, setModuleName)
    /// What it acquires or releases.
    TAVO_FIELD(TavoPowerManagerResources::Enum, resource, setResource)
    /// Whether it acquires or releases.
    TAVO_FIELD(TavoPowerModuleActions::Enum, action, setAction)
};

/// Sent to a module whose resources are revoked.
class TavoPowerManagerRevokeMessage : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerRevokeMessage)

    /// Whether the resources are revoked, or everybody has stopped.
    TAVO_FIELD(TavoPowerManagerRevokeMessageType::Enum, messageType, setMessageType)
    /// The resources that the module loses.
    TAVO_FIELD(TavoList<TavoPowerManagerResources::Enum>, revokeResources, setRevokeResources)
};

/// The holders of a resource.
class TavoPowerManagerResourceHolders : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerResourceHolders)

    /// The resource.
    TAVO_FIELD(TavoPowerManagerResources::Enum, resource, setResource)
    /// The modules' names, sorted.
    TAVO_FIELD(TavoList<QString>, holders, setHolders)
};

/// The state of the power manager.
class TavoPowerManagerState : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerState)

    /// True from the standby request on, even while holders are still stopping.
    TAVO_FIELD(bool, standby, setStandby)
    /// The registered modules' names, sorted.
    TAVO_FIELD(TavoList<QString>, modules, setModules)
    /// The resources that have holders, in the order of their numbers.
    TAVO_FIELD(TavoList<TavoPowerManagerResourceHolders>, resources, setResources)
};
