// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string_view>

/// The rows of the design tokens as they are written down: values in the primitives, references above them.
/// `ZOLMiniAppTokens` has them resolved.
namespace ostrel::ZOLTokenRows {

struct Row {
    std::string_view key;
    std::string_view value;
};

inline constexpr std::array<Row, 48> primitiveRows { {
    { "white", "#ffffff" },
    { "ink", "#202124" },
    { "gray600", "#6b6e75" },
    { "gray200", "#e8e9ed" },
    { "gray50", "#f5f6f8" },
    { "gray100", "#f2f3f5" },
    { "red", "#db303d" },
    { "purple", "#69429a" },
    { "amber", "#98600b" },
    { "green", "#287958" },
    { "blue", "#3465c5" },
    { "black", "#000000" },
    { "webGray", "#d9d9d9" },
    { "lime", "#c3ff00" },
    { "radius0", "0px" },
    { "radius2", "2px" },
    { "radius8", "8px" },
    { "radius16", "16px" },
    { "space4", "4px" },
    { "space8", "8px" },
    { "space12", "12px" },
    { "space16", "16px" },
    { "space24", "24px" },
    { "space32", "32px" },
    { "sizeMeta", "11px" },
    { "sizeBody", "14px" },
    { "sizeTitle", "24px" },
    { "target", "44px" },
    { "font", "\"ZOLPlex\", ui-monospace, monospace" },
    { "state", "160ms" },
    { "reveal", "440ms" },
    { "relationship", "640ms" },
    { "sweep", "1000ms" },
    { "ease", "cubic-bezier(.2,.8,.2,1)" },
    { "panel", "180ms" },
    { "hide", "140ms" },
    { "panelAppear", "200ms" },
    { "windowAppear", "180ms" },
    { "windowAppearShift", "6px" },
    { "gray300", "#c9cbd1" },
    { "gray400", "#9aa0a6" },
    { "gray700", "#5f6368" },
    { "gray800", "#3c4043" },
    { "gray900", "#2d2e31" },
    { "purple300", "#a98bd6" },
    { "amber300", "#d79a3a" },
    { "green300", "#4fb38a" },
    { "blue300", "#7aa2ec" },
} };

/// A semantic row and the primitive that it takes in each set.
struct SemanticReference {
    std::string_view key;
    std::string_view n1;
    std::string_view web;
    std::string_view n1Dark;
};

inline constexpr std::array<SemanticReference, 35> semanticReferences { {
    { "canvas", "white", "white", "ink" },
    { "surface", "white", "white", "ink" },
    { "text", "ink", "black", "gray100" },
    { "text-secondary", "gray600", "gray600", "gray400" },
    { "divider", "gray200", "webGray", "gray800" },
    { "hover", "gray50", "gray50", "gray900" },
    { "selected", "gray50", "gray50", "gray900" },
    { "data", "gray100", "gray100", "gray900" },
    { "selection", "red", "red", "red" },
    { "evidence", "purple", "purple", "purple300" },
    { "warning", "amber", "amber", "amber300" },
    { "danger", "red", "red", "red" },
    { "success", "green", "green", "green300" },
    { "info", "blue", "blue", "blue300" },
    { "neutral", "gray600", "gray600", "gray400" },
    { "radius-control", "radius8", "radius2", "radius8" },
    { "radius-card", "radius8", "radius2", "radius8" },
    { "radius-content", "radius16", "radius2", "radius16" },
    { "radius-shell", "radius0", "radius0", "radius0" },
    { "font", "font", "font", "font" },
    { "size-meta", "sizeMeta", "sizeMeta", "sizeMeta" },
    { "size-body", "sizeBody", "sizeBody", "sizeBody" },
    { "size-title", "sizeTitle", "sizeTitle", "sizeTitle" },
    { "target", "target", "target", "target" },
    { "motion-state", "state", "state", "state" },
    { "motion-reveal", "reveal", "reveal", "reveal" },
    { "motion-relationship", "relationship", "relationship", "relationship" },
    { "motion-sweep", "sweep", "sweep", "sweep" },
    { "motion-ease", "ease", "ease", "ease" },
    { "motion-panel", "panel", "panel", "panel" },
    { "motion-hide", "hide", "hide", "hide" },
    { "motion-panel-appear", "panelAppear", "panelAppear", "panelAppear" },
    { "motion-window-appear", "windowAppear", "windowAppear", "windowAppear" },
    { "motion-window-appear-shift", "windowAppearShift", "windowAppearShift", "windowAppearShift" },
    { "text-disabled", "gray300", "gray300", "gray700" },
} };

/// A component row and the semantic row of the same set that it takes.
inline constexpr std::array<Row, 24> componentReferences { {
    { "button-background", "surface" },
    { "button-hover", "hover" },
    { "button-text", "text" },
    { "button-border", "divider" },
    { "button-radius", "radius-control" },
    { "button-height", "target" },
    { "focus-ring", "selection" },
    { "card-background", "surface" },
    { "card-border", "divider" },
    { "card-radius", "radius-card" },
    { "panel-radius", "radius-content" },
    { "event-background", "data" },
    { "event-now", "selection" },
    { "event-radius", "radius-card" },
    { "receipt-linked", "evidence" },
    { "receipt-degraded", "danger" },
    { "receipt-unobserved", "neutral" },
    { "hint-text", "text" },
    { "hint-background", "surface" },
    { "hint-border", "divider" },
    { "hint-radius", "radius-content" },
    { "logo-ink", "text" },
    { "logo-signal", "selection" },
    { "companion-attention", "warning" },
} };

} // namespace ostrel::ZOLTokenRows
