// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ostrel {

/// The panel's looks and manners, for those who let the user choose them. Each choice is stored and takes
/// effect at once. Main thread only.
class PanelChoices {
public:
    virtual ~PanelChoices() = default;

    /// Whether the panel is black.
    [[nodiscard]] virtual bool dark() const = 0;
    virtual void setTheme(bool dark) = 0;
    /// Whether a click outside leaves the panel open.
    [[nodiscard]] virtual bool pinned() const = 0;
    virtual void setPinned(bool pinned) = 0;
};

} // namespace ostrel
