// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Bundle.h"

#include <functional>
#include <map>
#include <string>

/// A program that came with the resources that the test names.
class FakeBundle final : public platform::Bundle {
public:
    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name) const override
    {
        const auto found = resources.find(name);
        return found == resources.end() ? std::nullopt : std::optional(found->second);
    }

    std::map<std::string, std::string, std::less<>> resources;
};
