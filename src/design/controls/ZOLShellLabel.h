// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QLabel>
#include <QString>

namespace ostrel {

/// A text in a colour that follows the theme. It is shown as it is, never as markup, and as high as the font
/// says, whatever face a glyph comes from. Where it is limited to a number of lines, the last one ends in an
/// ellipsis, and the whole is the tooltip unless the owner gave one.
class ZOLShellLabel final : public QLabel {
public:
    ZOLShellLabel(
        const QString& text, const QFont& font, const ThemedColor& color, QWidget* parent = nullptr);

    void setColor(const ThemedColor& color);
    /// 0 for as many as the text needs. One line doesn't break between words; more do.
    void setMaximumLines(int lines);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    struct Lines;
    [[nodiscard]] Lines broken(int width) const;
    [[nodiscard]] int lineHeight() const;
    void showColor();

    ThemedColor color_;
    int maximumLines_ = 0;
};

} // namespace ostrel
