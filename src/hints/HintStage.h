// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLThemePolicy.h"
#include "hints/HintText.h"
#include "platform/Clock.h"
#include "platform/Geometry.h"

#include <functional>
#include <memory>
#include <string_view>

namespace ostrel {

/// A hint's window, from its making on; its end takes it off the screen. Main thread.
class HintWindow {
public:
    HintWindow() = default;
    HintWindow(const HintWindow&) = delete;
    HintWindow& operator=(const HintWindow&) = delete;
    virtual ~HintWindow() = default;

    /// In points.
    [[nodiscard]] virtual double width() const = 0;
    [[nodiscard]] virtual double height() const = 0;
    /// Comes up with its lower left corner there, above all else, and leaves the keyboard where it is.
    virtual void present(const platform::Point& lowerLeft) = 0;
    /// The figure's gesture; nothing where it has none or isn't on screen.
    virtual void flash() = 0;
    /// The theme has changed.
    virtual void applyTheme(ZOLThemePolicy::Mode mode) = 0;
};

/// What a hint's window tells. Each may end the window.
struct HintAnswers {
    std::function<void()> inspect;
    std::function<void()> snooze; ///< or close, in a sample
    std::function<void(std::string_view reason)> dismissed; ///< the shared card has ended by itself
};

/// Makes the two kinds of windows. `moves`: whether the figure may. Main thread.
class HintStage {
public:
    virtual ~HintStage() = default;

    [[nodiscard]] virtual std::unique_ptr<HintWindow> legacyCard(
        const HintText& text, bool moves, HintAnswers answers)
        = 0;
    /// This one ends by itself after `autoHide`.
    [[nodiscard]] virtual std::unique_ptr<HintWindow> sharedCard(
        const HintText& text, bool moves, platform::Seconds autoHide, HintAnswers answers)
        = 0;
};

} // namespace ostrel
