// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/controls/ButtonLook.h"

#include <QAbstractButton>
#include <QFont>
#include <QString>

#include <functional>

namespace ostrel {

/// A button of fixed size that draws itself by a `ButtonLook`. Its caption is lower case always. It is
/// pressed by mouse, space, return and enter; a click leaves it without the keyboard. Assistive technology
/// knows it by its caption, or by the accessible name that its owner gave it, and as selected while it is
/// active. Main thread.
class PaintedButton : public QAbstractButton {
public:
    /// Size in points.
    PaintedButton(ButtonKind kind, const QString& caption, int width, int height, QWidget* parent = nullptr);

    [[nodiscard]] ButtonKind buttonKind() const { return kind_; }
    [[nodiscard]] const QString& caption() const { return caption_; }
    /// Lower-cased. The accessible name follows unless the owner gave another.
    void setCaption(const QString& caption);

    [[nodiscard]] bool isActive() const { return active_; }
    void setActive(bool active);

    [[nodiscard]] bool isHovering() const { return hovering_; }

    /// What a press does; it may delete the button.
    void setHandler(std::function<void()> handler);

    [[nodiscard]] QSize sizeHint() const override;
    /// What it is in now.
    [[nodiscard]] ButtonState state() const;

protected:
    void setButtonKind(ButtonKind kind);
    /// The face of the caption.
    [[nodiscard]] virtual QFont captionFont(double size, QFont::Weight weight) const = 0;

    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void press();
    void setHovering(bool hovering);
    void paintCaption(QPainter& painter, const ButtonLook& look) const;

    ButtonKind kind_;
    QString caption_;
    bool active_ = false;
    bool hovering_ = false;
    std::function<void()> handler_;
};

} // namespace ostrel
