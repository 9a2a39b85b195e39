// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>

namespace ostrel {

/// One line of text that ends in an ellipsis where it doesn't fit, and has the whole of it as its tooltip
/// then.
class ElidedLabel final : public QWidget {
public:
    ElidedLabel(const QString& text, const QFont& font, const QColor& color, QWidget* parent = nullptr);

    [[nodiscard]] const QString& text() const { return text_; }
    void setText(const QString& text);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void updateToolTip();

    QString text_;
    QColor color_;
};

} // namespace ostrel
