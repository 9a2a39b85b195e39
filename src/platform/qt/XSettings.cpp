// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/XSettings.h"

#include <cstddef>

namespace platform {

namespace {

enum Kind : std::uint8_t { integer = 0, text = 1, color = 2 };

constexpr std::uint8_t littleEndian = 0;
constexpr std::uint8_t bigEndian = 1;
constexpr std::size_t colorSize = 8;

/// Takes the bytes from the front; once some are missing it gives zeros, and `failed`.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes)
        : bytes_(bytes)
    {
    }

    std::span<const std::uint8_t> take(std::size_t count)
    {
        if (count > bytes_.size()) {
            failed = true;
            bytes_ = {};
            return {};
        }
        const auto taken = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return taken;
    }

    /// Texts and names are filled up to a multiple of four bytes.
    std::string_view takeText(std::size_t length)
    {
        const auto taken = take(length);
        take((4 - length % 4) % 4);
        return { reinterpret_cast<const char*>(taken.data()), taken.size() };
    }

    std::uint32_t number(std::size_t size)
    {
        std::uint32_t value = 0;
        const auto taken = take(size);
        for (std::size_t i = 0; i < taken.size(); ++i)
            value = value << 8 | taken[mostSignificantFirst ? i : taken.size() - 1 - i];
        return value;
    }

    bool mostSignificantFirst = false;
    bool failed = false;

private:
    std::span<const std::uint8_t> bytes_;
};

} // namespace

std::optional<std::int32_t> xsettingsInteger(std::span<const std::uint8_t> bytes, std::string_view name)
{
    Reader reader(bytes);
    const std::uint32_t order = reader.number(1);
    if (order != littleEndian && order != bigEndian)
        return {};
    reader.mostSignificantFirst = order == bigEndian;
    reader.take(3);
    reader.number(4); // the serial number of the whole
    std::optional<std::int32_t> found;
    for (std::uint32_t left = reader.number(4); left > 0 && !reader.failed; --left) {
        const std::uint32_t kind = reader.number(1);
        reader.take(1);
        const std::string_view present = reader.takeText(reader.number(2));
        reader.number(4); // the serial number of its last change
        switch (kind) {
        case Kind::integer: {
            const auto value = static_cast<std::int32_t>(reader.number(4));
            if (present == name)
                found = value;
            break;
        }
        case Kind::text:
            reader.takeText(reader.number(4));
            break;
        case Kind::color:
            reader.take(colorSize);
            break;
        default:
            return {};
        }
    }
    return reader.failed ? std::nullopt : found;
}

} // namespace platform
