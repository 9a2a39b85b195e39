// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QLabel>
#include <QString>
#include <QStringList>

namespace ostrel {

/// What makes a tooltip show the text as it is, never as markup, a long one on several lines.
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
    /// What the lines were made for: layouts and painting ask again and again.
    struct LinesKey {
        QString text;
        QFont font;
        int width = -1;
        int maximumLines = 0;
        bool wraps = false;

        bool operator==(const LinesKey&) const = default;
    };

    [[nodiscard]] const Lines& broken(int width) const;
    [[nodiscard]] Lines breakIn(int width) const;
    /// Of the widest line as it was written.
    [[nodiscard]] double naturalWidth() const;
    [[nodiscard]] int lineHeight() const;
    void showColor();

    ThemedColor color_;
    int maximumLines_ = 0;
    mutable LinesKey brokenFor_;
    mutable Lines broken_;
    mutable LinesKey measuredFor_;
    mutable double measured_ = 0;
};

} // namespace ostrel
