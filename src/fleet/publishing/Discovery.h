// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/FleetConfiguration.h"
#include "mqtt/MqttMessage.h"

#include <vector>

/// The retained messages by which home automation finds the device: an entity for messages, sensors for what is
/// shown and played, and the configured buttons. None without a prefix.
std::vector<MqttMessage> discoveryMessages(const FleetConfiguration &configuration);
