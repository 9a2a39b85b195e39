// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A key with modifiers as the family's tables have it.
struct FamilyCombo {
    std::uint32_t keyCode = 0; ///< virtual key code
    std::uint32_t carbonModifiers = 0; ///< control 0x1000, option 0x800, shift 0x200, command 0x100

    bool operator==(const FamilyCombo&) const = default;
};

/// Who holds which combination: the sibling apps and the system. Plain data and rules over it.
namespace FamilyHotkeys {

using Combos = std::vector<FamilyCombo>;

/// A name that the user knows, and what is held under it.
struct Holder {
    std::string_view name;
    Combos combos;

    bool operator==(const Holder&) const = default;
};
using Holders = std::vector<Holder>;

inline constexpr std::string_view ostrel = "OSTREL";
inline constexpr std::string_view pellamDial = "Pellam Dial";
inline constexpr std::string_view tessitLoop = "Tessit Loop";
inline constexpr std::string_view vormelTrim = "Vormel Trim";
inline constexpr std::string_view ruvane = "ruvane";
inline constexpr std::string_view sillon = "Sillon";

/// What each app ships with.
[[nodiscard]] const Holders& familyDefaults();
/// What the system itself uses, one combination a row.
[[nodiscard]] const Holders& systemHeld();
/// Both tables in one line.
[[nodiscard]] std::string signature();

/// The words that one sibling stores for its hotkey; nothing for another word.
[[nodiscard]] std::optional<Combos> tessitCombos(std::string_view word);

/// Reads what the siblings hold at this moment. A function answers nothing where the table stands, and an
/// empty list where the sibling's hotkey is cleared; what it lists takes the table's place. None is called
/// while it is empty. Main thread.
struct Reader {
    using Read = std::function<std::optional<Combos>()>;

    Read ostrel = {};
    Read pellamDial = {};
    Read tessitLoop = {};
    Read ruvane = {};
    Read sillon = {};
};

/// Every app but the excluded one with what it holds, in the table's order.
[[nodiscard]] Holders holders(std::string_view excluded, const Reader& reader);
/// "taken by {name}" for the first of `held`, or else of the system, that has the combination.
[[nodiscard]] std::optional<std::string> refusal(const FamilyCombo& combo, const Holders& held);

} // namespace FamilyHotkeys

} // namespace ostrel
