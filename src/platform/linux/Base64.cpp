// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Base64.h"

#include <cstddef>
#include <cstdint>

namespace platform {

namespace {

constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string toBase64(std::string_view bytes)
{
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const auto group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= group.size() ? letters[bits >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

std::optional<std::string> fromBase64(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); at += 4) {
        const auto group = text.substr(at, 4);
        const bool last = at + 4 == text.size();
        const std::size_t padding = !last ? 0 : group.ends_with("==") ? 2 : group.ends_with("=") ? 1 : 0;
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const auto value = i < 4 - padding ? letters.find(group[i]) : 0;
            if (value == std::string_view::npos)
                return std::nullopt;
            bits = bits << 6 | static_cast<std::uint32_t>(value);
        }
        for (std::size_t i = 0; i < 3 - padding; ++i)
            bytes += static_cast<char>(bits >> (16 - 8 * i) & 0xff);
    }
    return bytes;
}

} // namespace platform
