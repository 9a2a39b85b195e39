// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UserDefaults.h"

#include <map>
#include <variant>

/// Settings in memory, with the type rules of the real ones.
class FakeUserDefaults final : public platform::UserDefaults {
public:
    struct Bytes {
        std::string value;
    };
    using Value = std::variant<bool, double, std::string, std::vector<std::string>, Bytes>;

    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const override { return get<bool>(key); }
    [[nodiscard]] std::optional<double> number(std::string_view key) const override
    {
        return get<double>(key);
    }
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override
    {
        return get<std::string>(key);
    }
    [[nodiscard]] std::optional<std::vector<std::string>> textArray(std::string_view key) const override
    {
        return get<std::vector<std::string>>(key);
    }
    [[nodiscard]] std::optional<std::string> bytes(std::string_view key) const override
    {
        const auto stored = get<Bytes>(key);
        return stored ? std::optional(stored->value) : std::nullopt;
    }

    void setBoolean(std::string_view key, bool value) override
    {
        values.insert_or_assign(std::string(key), value);
    }
    void setNumber(std::string_view key, double value) override
    {
        values.insert_or_assign(std::string(key), value);
    }
    void setText(std::string_view key, std::string_view value) override
    {
        values.insert_or_assign(std::string(key), std::string(value));
    }
    void setTextArray(std::string_view key, const std::vector<std::string>& value) override
    {
        values.insert_or_assign(std::string(key), value);
    }
    void setBytes(std::string_view key, std::string_view value) override
    {
        values.insert_or_assign(std::string(key), Bytes { std::string(value) });
    }
    void remove(std::string_view key) override { values.erase(std::string(key)); }

    std::map<std::string, Value, std::less<>> values;

private:
    template <typename T>
    [[nodiscard]] std::optional<T> get(std::string_view key) const
    {
        const auto found = values.find(key);
        if (found == values.end())
            return std::nullopt;
        const T* value = std::get_if<T>(&found->second);
        return value ? std::optional(*value) : std::nullopt;
    }
};
