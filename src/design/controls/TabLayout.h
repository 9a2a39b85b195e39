// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QString>
#include <QWidget>

#include <functional>
#include <initializer_list>

class QVBoxLayout;

namespace ostrel {

class OstrelButton;
class ZOLShellLabel;

/// A label in the panel's font that breaks between words, as high as its text needs, `width` wide; 0 leaves
/// the width to the layout.
[[nodiscard]] ZOLShellLabel* wrappingLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color, int width = 0);

/// A label in the panel's font of one line, as wide as its text.
[[nodiscard]] ZOLShellLabel* lineLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color);

/// The same, but no wider than the room it gets: it ends in an ellipsis there.
[[nodiscard]] ZOLShellLabel* elidedLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color);

/// The same of a fixed size: its text may change at any time, and nothing around it moves.
[[nodiscard]] ZOLShellLabel* fixedLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color, int width);

/// A horizontal rule, one crisp line high; 0 leaves the width to the layout.
[[nodiscard]] QWidget* separator(int width = 0);

/// An empty view that takes up the room that is left in a row.
[[nodiscard]] QWidget* flexSpacer();

/// Views side by side, each at its own width; null stands for the room that is left.
[[nodiscard]] QWidget* viewRow(std::initializer_list<QWidget*> views, int width, int spacing = 8);

/// The small caption above a group of a tab.
[[nodiscard]] ZOLShellLabel* section(const QString& title, int width);

/// A button of a tab, in points. The handler may delete it.
[[nodiscard]] OstrelButton* actionButton(
    const QString& title, int width, std::function<void()> handler, int height = 44);

/// A filled panel with round corners that stacks what it holds. Main thread.
class PanelBox final : public QWidget {
public:
    static constexpr int endInset = 12; ///< at the top and the bottom
    static constexpr int sideInset = 14;
    static constexpr int spacing = 5;

    explicit PanelBox(int width, QWidget* parent = nullptr);

    /// What a view in the box has, in points.
    [[nodiscard]] int contentWidth() const { return width() - 2 * sideInset; }
    [[nodiscard]] QVBoxLayout& column() const { return *column_; }
    void add(QWidget* view);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVBoxLayout* column_;
};

/// One line: what is read at the left, its value at the right edge. Either ends in an ellipsis where both
/// don't fit. Main thread.
class KeyValueRow final : public QWidget {
public:
    KeyValueRow(const QString& label, const QString& value, int width, QWidget* parent = nullptr);

    [[nodiscard]] ZOLShellLabel* label() const { return label_; }
    /// Its text may change at any time.
    [[nodiscard]] ZOLShellLabel* value() const { return value_; }

private:
    ZOLShellLabel* label_;
    ZOLShellLabel* value_;
};

[[nodiscard]] KeyValueRow* kvRow(const QString& label, const QString& value, int width);

} // namespace ostrel
