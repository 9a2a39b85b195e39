// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/FamilyHotkeys.h"
#include "platform/FileManager.h"
#include "platform/UserDefaults.h"

namespace ostrel::FamilyHotkeys {

/// Reads the siblings' stored hotkeys, at each call afresh: four suites of settings and one small file below
/// the home directory. Whatever can't be read counts as absent; nothing is written, and nothing waits. Both
/// must outlive the reader.
[[nodiscard]] Reader diskReader(
    const platform::UserDefaultsSuites& suites, const platform::FileManager& files);

} // namespace ostrel::FamilyHotkeys
