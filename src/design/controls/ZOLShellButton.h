// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/controls/PaintedButton.h"

#include <functional>

namespace ostrel {

/// A button of the frame that the family's applications share. Main thread.
class ZOLShellButton : public PaintedButton {
public:
    enum class Kind {
        framed, ///< filled and outlined
        navigation, ///< flat; a bar marks the active one
        quiet, ///< filled, without an outline
    };

    /// Size in points. The handler may delete the button.
    ZOLShellButton(const QString& title, int width, std::function<void()> handler, int height = 28,
        QWidget* parent = nullptr);

    [[nodiscard]] Kind kind() const;
    void setKind(Kind kind);

protected:
    [[nodiscard]] QFont captionFont(double size, QFont::Weight weight) const override;
};

} // namespace ostrel
