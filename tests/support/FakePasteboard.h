// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Pasteboard.h"

#include <string>
#include <vector>

/// A clipboard that keeps all that was ever copied.
struct FakePasteboard final : platform::Pasteboard {
    void setText(std::string_view text) override { copied.emplace_back(text); }

    std::vector<std::string> copied;
};
