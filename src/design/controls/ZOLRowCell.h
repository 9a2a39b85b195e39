// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLAppMark.h"

#include <QAbstractButton>
#include <QString>

#include <functional>
#include <variant>

namespace ostrel {

/// A letter on a small rounded square, for a row that has no mark. Main thread.
class ZOLRowLetterView final : public QWidget {
public:
    explicit ZOLRowLetterView(QString letter, QWidget* parent = nullptr);

    [[nodiscard]] const QString& letter() const { return letter_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString letter_;
};

/// A row of a list: a mark or a letter, then its texts. With a handler it is a button, pressed by mouse,
/// space, return and enter; without one it is a mere row. Main thread.
class ZOLRowCell final : public QAbstractButton {
public:
    /// What stands at the left: a mark, or a letter.
    using Leading = std::variant<ZOLAppMark, QString>;

    struct Texts {
        QString title;
        QString subtitle; ///< no label if empty
        QString reason; ///< at the right; no label if empty
    };

    /// Width in points. The handler may delete the row.
    ZOLRowCell(const Leading& leading, const Texts& texts, int width, std::function<void()> handler,
        QWidget* parent = nullptr);

    [[nodiscard]] const Texts& texts() const { return texts_; }
    [[nodiscard]] bool isSelected() const { return selected_; }
    void setSelected(bool selected);
    [[nodiscard]] bool isHovering() const { return hovering_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void press();
    void setHovering(bool hovering);

    Texts texts_;
    bool selected_ = false;
    bool hovering_ = false;
    std::function<void()> handler_;
};

} // namespace ostrel
