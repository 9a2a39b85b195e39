// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace platform {

/// Processors that this process may run on; the online ones where the mask can't be read. At least 1.
[[nodiscard]] int activeProcessors();

} // namespace platform
