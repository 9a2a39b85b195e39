// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QLabel>
#include <QString>
#include <QStringList>

#include <optional>

namespace ostrel {

/// What makes a tooltip show the text as it is, never as markup.
[[nodiscard]] QString plainToolTip(const QString& text);

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

    /// What each line shows at the present width.
    [[nodiscard]] QStringList shownLines() const;
    /// Whether a part of the text isn't shown for lack of lines.
    [[nodiscard]] bool isCut() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    /// A text cut into what each line shows.
    struct Lines {
        QStringList texts;
        bool cut = false;
    };
    [[nodiscard]] Lines broken(int width) const;
    [[nodiscard]] int lineHeight() const;
    [[nodiscard]] double widestLine() const;
    void showColor();

    ThemedColor color_;
    int maximumLines_ = 0;
    // A layout asks several times how wide the text is, and to know costs more than all else of a label.
    mutable QString measured_;
    mutable std::optional<double> widest_; ///< of `measured_` in the present font, in points
};

} // namespace ostrel
