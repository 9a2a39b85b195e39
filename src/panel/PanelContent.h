// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace ostrel {

/// What the panel holds, for those who open and close it. Main thread.
class PanelContent {
public:
    virtual ~PanelContent() = default;

    /// Builds the frame, at its full size and in the present theme; the caller takes it over. What was built
    /// before is no longer drawn to.
    [[nodiscard]] virtual QWidget* makeContent() = 0;
    /// Draws the present tab anew.
    virtual void renderBody() = 0;
    /// Makes the frame the one that gets the keys of its window.
    virtual void takeKeys() = 0;
    /// Shows whether the panel is pinned.
    virtual void showPinned(bool pinned) = 0;
    /// Takes the help overlay away; whether there was one.
    virtual bool dismissHelpOverlay(bool animated) = 0;
};

} // namespace ostrel
