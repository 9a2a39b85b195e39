// SPDX-License-Identifier: Apache-2.0
#include "support/QtEnvironment.h"

#include <gtest/gtest.h>

namespace {

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace
