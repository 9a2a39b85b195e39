// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UserDefaults.h"

#include "support/CallLog.h"

#include <map>
#include <utility>
#include <variant>

/// Settings in memory, with the type rules of the real ones.
class FakeUserDefaults final : public platform::UserDefaults, public Logged {
    using Key = std::string_view;
    using Texts = std::vector<std::string>;

public:
    struct Bytes {
        std::string value;
    };
    using Value = std::variant<bool, double, std::string, Texts, Bytes>;

    [[nodiscard]] std::optional<bool> boolean(Key key) const override { return get<bool>(key); }
    [[nodiscard]] std::optional<double> number(Key key) const override { return get<double>(key); }
    [[nodiscard]] std::optional<std::string> text(Key key) const override { return get<std::string>(key); }
    [[nodiscard]] std::optional<Texts> textArray(Key key) const override { return get<Texts>(key); }
    [[nodiscard]] std::optional<std::string> bytes(Key key) const override
    {
        const auto stored = get<Bytes>(key);
        return stored ? std::optional(stored->value) : std::nullopt;
    }

    void setBoolean(Key key, bool value) override { set(key, value); }
    void setNumber(Key key, double value) override { set(key, value); }
    void setText(Key key, std::string_view value) override { set(key, std::string(value)); }
    void setTextArray(Key key, const Texts& value) override { set(key, value); }
    void setBytes(Key key, std::string_view value) override { set(key, Bytes { std::string(value) }); }
    void remove(Key key) override { values.erase(std::string(key)); }

    std::map<std::string, Value, std::less<>> values;
    int writes = 0; ///< so far, also those that changed nothing

private:
    void set(Key key, Value value)
    {
        note("stores " + std::string(key));
        values.insert_or_assign(std::string(key), std::move(value));
        ++writes;
    }

    template <typename T>
    [[nodiscard]] std::optional<T> get(Key key) const
    {
        note("looks up " + std::string(key));
        const auto found = values.find(key);
        const T* value = found == values.end() ? nullptr : std::get_if<T>(&found->second);
        return value ? std::optional(*value) : std::nullopt;
    }
};
