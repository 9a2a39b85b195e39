// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/controls/PaintedButton.h"

#include <QVariant>

#include <functional>

namespace ostrel {

/// The button of the system's own views. Main thread.
class OstrelButton final : public PaintedButton {
public:
    /// Size in points. The handler may delete the button.
    OstrelButton(const QString& title, int width, std::function<void()> handler, int height = 28,
        QWidget* parent = nullptr);

    /// The caption and the accessible name.
    void setLabel(const QString& text);

    /// The flat look of tabs.
    [[nodiscard]] bool isNavigation() const { return buttonKind() == ButtonKind::ostrelNavigation; }
    void setNavigation(bool navigation);

    /// The owner's payload; invalid where it gave none.
    [[nodiscard]] const QVariant& representedObject() const { return representedObject_; }
    void setRepresentedObject(const QVariant& object) { representedObject_ = object; }

protected:
    [[nodiscard]] QFont captionFont(double size, QFont::Weight weight) const override;

private:
    QVariant representedObject_;
};

/// Gives a button a tooltip, within an expression.
OstrelButton* ostrelTip(OstrelButton* button, const QString& text);

} // namespace ostrel
