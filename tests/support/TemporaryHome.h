// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/TemporaryFolder.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string>

/// A folder that is $HOME while this lives. The base directories that could lead out of it are unset
/// meanwhile. Children started then see the same. One at a time, and while no other thread reads the
/// environment.
class TemporaryHome : public TemporaryFolder {
public:
    TemporaryHome()
    {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (const char* value = std::getenv(names[i]))
                before_[i] = value;
            ::unsetenv(names[i]);
        }
        ::setenv("HOME", path().c_str(), 1);
    }

    ~TemporaryHome()
    {
        for (std::size_t i = 0; i < names.size(); ++i)
            before_[i] ? ::setenv(names[i], before_[i]->c_str(), 1) : ::unsetenv(names[i]);
    }

private:
    static constexpr std::array names { "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
        "XDG_CACHE_HOME", "XDG_RUNTIME_DIR" };

    std::array<std::optional<std::string>, names.size()> before_;
};
