// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace platform {

/// Where copied text waits to be pasted. Main thread.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    /// Replaces what is there by plain text. Without a display nothing happens.
    virtual void setText(std::string_view text) = 0;
};

} // namespace platform
