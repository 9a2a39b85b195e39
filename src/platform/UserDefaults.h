// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// A small persistent map from dotted keys to plain values. An absent key stays apart from every value; a
/// value of another type than the one asked for reads as absent. Writes reach the disk before they return;
/// when that fails the value holds in memory for the rest of the run. Main thread only.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    [[nodiscard]] virtual std::optional<bool> boolean(std::string_view key) const = 0;
    [[nodiscard]] virtual std::optional<double> number(std::string_view key) const = 0;
    [[nodiscard]] virtual std::optional<std::string> text(std::string_view key) const = 0;
    /// Absent too when one element isn't a text.
    [[nodiscard]] virtual std::optional<std::vector<std::string>> textArray(std::string_view key) const = 0;
    /// Bytes of any kind; they needn't be valid text.
    [[nodiscard]] virtual std::optional<std::string> bytes(std::string_view key) const = 0;

    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void setNumber(std::string_view key, double value) = 0;
    virtual void setText(std::string_view key, std::string_view value) = 0;
    virtual void setTextArray(std::string_view key, const std::vector<std::string>& value) = 0;
    virtual void setBytes(std::string_view key, std::string_view value) = 0;
    virtual void remove(std::string_view key) = 0;
};

/// The settings that other programs keep where this one keeps its own. Main thread only.
class UserDefaultsSuites {
public:
    virtual ~UserDefaultsSuites() = default;

    /// Another program's settings as they are at each reading. They are never written, made or mended; what
    /// can't be read has no keys. Null where settings can't be found at all.
    [[nodiscard]] virtual std::unique_ptr<const UserDefaults> open(const std::string& suite) const = 0;
};

} // namespace platform
