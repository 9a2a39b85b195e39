// SPDX-License-Identifier: Apache-2.0
#include "core/Uuid.h"

#include <cstdint>
#include <random>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// RFC 9562, 4.1 and 4.2: where an identifier says that it is a random one.
constexpr std::uint64_t versionMask = 0xF000;
constexpr std::uint64_t randomVersion = 0x4000;
constexpr std::uint64_t variantMask = 0xC000'0000'0000'0000;
constexpr std::uint64_t usualVariant = 0x8000'0000'0000'0000;

} // namespace

std::string freshUuid()
{
    std::random_device source;
    std::uniform_int_distribution<std::uint64_t> bits;
    const std::uint64_t upper = (bits(source) & ~versionMask) | randomVersion;
    const std::uint64_t lower = (bits(source) & ~variantMask) | usualVariant;
    return fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:012X}", upper >> 32U, (upper >> 16U) & 0xFFFFU,
        upper & 0xFFFFU, lower >> 48U, lower & 0xFFFF'FFFF'FFFFU);
}

} // namespace ostrel
