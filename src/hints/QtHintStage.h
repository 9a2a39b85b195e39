// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/MotionServices.h"
#include "hints/HintStage.h"
#include "platform/FloatingWindows.h"

namespace ostrel {

/// Hints as windows of the desktop. Main thread.
class QtHintStage final : public HintStage {
public:
    /// The services outlive the stage and its windows.
    QtHintStage(const MotionServices& motion, platform::FloatingWindows& windows);

    [[nodiscard]] std::unique_ptr<HintWindow> legacyCard(
        const HintText& text, bool moves, HintAnswers answers) override;
    [[nodiscard]] std::unique_ptr<HintWindow> sharedCard(
        const HintText& text, bool moves, platform::Seconds autoHide, HintAnswers answers) override;

private:
    MotionServices motion_;
    platform::FloatingWindows& windows_;
};

} // namespace ostrel
