// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Pasteboard.h"

namespace platform {

/// The desktop's clipboard. What is copied can be pasted for as long as this process lives, or longer where
/// the desktop has a clipboard manager.
class QtPasteboard final : public Pasteboard {
public:
    void setText(std::string_view text) override;
};

} // namespace platform
