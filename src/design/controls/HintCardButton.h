// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/controls/PaintedButton.h"

namespace ostrel {

/// A button of the hint card, as wide as its caption needs. Main thread.
class HintCardButton final : public PaintedButton {
public:
    static constexpr int leastWidth = 56;
    static constexpr int buttonHeight = 28;

    /// `tag` is the place of its action.
    HintCardButton(const QString& caption, int tag, QWidget* parent = nullptr);

    [[nodiscard]] int tag() const { return tag_; }

protected:
    [[nodiscard]] QFont captionFont(double size, QFont::Weight weight) const override;

private:
    int tag_;
};

} // namespace ostrel
