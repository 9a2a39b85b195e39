// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/KeyPositions.h"

#include <array>
#include <utility>

namespace platform {

namespace {

/// From the kernel's numbers to the display's.
constexpr std::uint8_t offset = 8;

using Place = std::pair<std::uint8_t, std::uint8_t>;

/// Virtual key code and the kernel's number, row by row.
constexpr std::array<Place, 106> places { {
    // escape and the function keys
    { 53, 1 }, { 122, 59 }, { 120, 60 }, { 99, 61 }, { 118, 62 }, { 96, 63 }, { 97, 64 }, { 98, 65 },
    { 100, 66 }, { 101, 67 }, { 109, 68 }, { 103, 87 }, { 111, 88 }, { 105, 183 }, { 107, 184 }, { 113, 185 },
    { 106, 186 }, { 64, 187 }, { 79, 188 }, { 80, 189 }, { 90, 190 },
    // the row of digits
    { 50, 41 }, { 18, 2 }, { 19, 3 }, { 20, 4 }, { 21, 5 }, { 23, 6 }, { 22, 7 }, { 26, 8 }, { 28, 9 },
    { 25, 10 }, { 29, 11 }, { 27, 12 }, { 24, 13 }, { 93, 124 }, // yen
    { 51, 14 }, // delete backward
    // q to p
    { 48, 15 }, // tab
    { 12, 16 }, { 13, 17 }, { 14, 18 }, { 15, 19 }, { 17, 20 }, { 16, 21 }, { 32, 22 }, { 34, 23 },
    { 31, 24 }, { 35, 25 }, { 33, 26 }, { 30, 27 }, { 42, 43 }, // backslash
    // a to l
    { 0, 30 }, { 1, 31 }, { 2, 32 }, { 3, 33 }, { 5, 34 }, { 4, 35 }, { 38, 36 }, { 40, 37 }, { 37, 38 },
    { 41, 39 }, { 39, 40 }, { 36, 28 }, // return
    // z to m
    { 10, 86 }, // the key beside the left shift
    { 6, 44 }, { 7, 45 }, { 8, 46 }, { 9, 47 }, { 11, 48 }, { 45, 49 }, { 46, 50 }, { 43, 51 }, { 47, 52 },
    { 44, 53 }, { 94, 89 }, // underscore of Japanese keyboards
    { 49, 57 }, // space
    { 110, 127 }, // menu
    // moving about
    { 114, 110 }, { 117, 111 }, { 115, 102 }, { 119, 107 }, { 116, 104 }, { 121, 109 }, { 123, 105 },
    { 124, 106 }, { 125, 108 }, { 126, 103 },
    // the keypad
    { 71, 69 }, { 81, 117 }, { 75, 98 }, { 67, 55 }, { 78, 74 }, { 69, 78 }, { 76, 96 }, { 65, 83 },
    { 95, 121 }, { 82, 82 }, { 83, 79 }, { 84, 80 }, { 85, 81 }, { 86, 75 }, { 87, 76 }, { 88, 77 },
    { 89, 71 }, { 91, 72 }, { 92, 73 }, { 102, 123 }, // eisu
} };

} // namespace

std::optional<std::uint8_t> xKeyOf(std::uint32_t keyCode)
{
    for (const auto& [code, kernel] : places)
        if (code == keyCode)
            return static_cast<std::uint8_t>(kernel + offset);
    return std::nullopt;
}

std::optional<std::uint32_t> keyCodeOf(std::uint32_t xKey)
{
    for (const auto& [code, kernel] : places)
        if (kernel + std::uint32_t { offset } == xKey)
            return code;
    return std::nullopt;
}

} // namespace platform
