// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"
#include "history/OstrelHistory.h"
#include "platform/Clock.h"
#include "readings/NativeStats.h"

namespace ostrel::SelfTestFixture {

/// A small snapshot, in the collector's words.
[[nodiscard]] json::Value snapshot();

/// A native reading that a public picture may show.
[[nodiscard]] NativeStats native();
/// Percent of the processor beside that reading.
inline constexpr double cpu = 24;

/// Two hours of minutes that end with the present one.
[[nodiscard]] OstrelHistory history(platform::Instant now);

} // namespace ostrel::SelfTestFixture
