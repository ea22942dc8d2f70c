// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/cmpath.h"
#include "core/tavo/enumerations.h"
#include "core/tavo/export.h"
#include "core/tavo/tavohash.h"
#include "core/tavo/tavolist.h"

/// Request: makes a module known to the power manager. Value: a TavoPowerManagerModuleRegister.
TAVO_API_EXPORT CMPath TavoPowerManagerModuleRegisterPath();

/// Request: acquires or releases a resource. Value: a TavoPowerManagerResourceRequest. Answer:
/// empty when granted, an error when refused.
TAVO_API_EXPORT CMPath TavoPowerManagerResourceRequestPath();

/// Tells the power manager where a module takes its messages.
class TavoPowerManagerModuleRegister : public TavoHash
{
    TAVO_RECORD(TavoPowerManagerModuleRegister)

    TAVO_FIELD(QString, moduleName, setModuleName)
    /// Takes the message that resources are revoked; answered once the module has stopped.
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
