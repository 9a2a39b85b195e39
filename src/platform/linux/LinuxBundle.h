// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Bundle.h"

#include <string>

namespace platform {

/// Resources under share/ostrel, beside the executable (a build tree) or beside its folder (an installation).
class LinuxBundle final : public Bundle {
public:
    /// `executableFolder` is where the running program stands; empty finds no resource.
    explicit LinuxBundle(std::string executableFolder);

    /// The folder of the running program; empty when the kernel doesn't tell.
    [[nodiscard]] static std::string runningExecutableFolder();

    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name) const override;

private:
    std::string executableFolder_;
};

} // namespace platform
