// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The files that came with the program. Any thread.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The path of a resource file, for instance "collectors/ostrel.py"; nothing when the program came
    /// without it.
    [[nodiscard]] virtual std::optional<std::string> pathForResource(std::string_view name) const = 0;
};

} // namespace platform
