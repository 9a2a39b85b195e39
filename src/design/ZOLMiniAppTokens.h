// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLTokenRows.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

/// The visual vocabulary that all applications of the family share: colours as "#rrggbb", lengths in "px",
/// durations in "ms", found by name. Primitives hold the values; semantic rows take primitives, and component
/// rows take semantic rows of the same set. Every reference is resolved by the compiler.
namespace ostrel::ZOLMiniAppTokens {

inline constexpr std::string_view version = "2026.10.02-n1";
/// Provenance: the digest of every resolved row, each as a line "{set}.{layer}.{key}={value}", the primitives
/// first and without a set, then N1, N1Dark and Web.
inline constexpr std::string_view sourceSHA256
    = "135b5282fabdbe71f8b41a10248ce19758d4a6d8dd25e7247ebd61ff4284be7d";

using Row = ZOLTokenRows::Row;

/// A table of rows in their written order.
class Table {
public:
    constexpr explicit Table(std::span<const Row> rows)
        : rows_(rows)
    {
    }

    /// The value under exactly this key; absent for any other.
    [[nodiscard]] constexpr std::optional<std::string_view> find(std::string_view key) const
    {
        for (const Row& row : rows_)
            if (row.key == key)
                return row.value;
        return std::nullopt;
    }

    [[nodiscard]] constexpr std::size_t size() const { return rows_.size(); }
    [[nodiscard]] constexpr auto begin() const { return rows_.begin(); }
    [[nodiscard]] constexpr auto end() const { return rows_.end(); }

private:
    std::span<const Row> rows_;
};

/// One look of the family: what things are, and what controls take from that.
struct Set {
    Table semantic;
    Table component;
};

namespace resolution {

using SemanticRows = std::array<Row, ZOLTokenRows::semanticReferences.size()>;
using ComponentRows = std::array<Row, ZOLTokenRows::componentReferences.size()>;

/// A reference to a row that isn't there ends the compilation: the optional is read unchecked by value().
consteval SemanticRows semantic(std::string_view ZOLTokenRows::SemanticReference::*set)
{
    const Table primitives { ZOLTokenRows::primitiveRows };
    SemanticRows rows {};
    for (std::size_t at = 0; at < rows.size(); ++at) {
        const auto& reference = ZOLTokenRows::semanticReferences[at];
        rows[at] = { reference.key, primitives.find(reference.*set).value() };
    }
    return rows;
}

consteval ComponentRows component(const SemanticRows& semanticRows)
{
    const Table semantic { semanticRows };
    ComponentRows rows {};
    for (std::size_t at = 0; at < rows.size(); ++at) {
        const Row& reference = ZOLTokenRows::componentReferences[at];
        rows[at] = { reference.key, semantic.find(reference.value).value() };
    }
    return rows;
}

inline constexpr SemanticRows n1Semantic = semantic(&ZOLTokenRows::SemanticReference::n1);
inline constexpr SemanticRows n1DarkSemantic = semantic(&ZOLTokenRows::SemanticReference::n1Dark);
inline constexpr SemanticRows webSemantic = semantic(&ZOLTokenRows::SemanticReference::web);
inline constexpr ComponentRows n1Component = component(n1Semantic);
inline constexpr ComponentRows n1DarkComponent = component(n1DarkSemantic);
inline constexpr ComponentRows webComponent = component(webSemantic);

} // namespace resolution

inline constexpr Table primitives { ZOLTokenRows::primitiveRows };
/// The light set of the native shell.
inline constexpr Set N1 { Table(resolution::n1Semantic), Table(resolution::n1Component) };
/// Its dark twin, for the black theme.
inline constexpr Set N1Dark { Table(resolution::n1DarkSemantic), Table(resolution::n1DarkComponent) };
/// The set of the family's pages; nothing here draws with it.
inline constexpr Set Web { Table(resolution::webSemantic), Table(resolution::webComponent) };

/// The number in a length or a duration, with or without its unit; absent for a text that isn't one.
[[nodiscard]] std::optional<double> number(std::string_view value);

/// A duration in seconds: 0 under reduced motion, whatever the value, and 0 for a text that isn't a number.
[[nodiscard]] double seconds(std::string_view value, bool reducedMotion);

} // namespace ostrel::ZOLMiniAppTokens
