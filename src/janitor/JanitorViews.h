// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/OstrelStyle.h"
#include "design/ThemedColor.h"
#include "janitor/JanitorText.h"

#include <QFont>

#include <functional>
#include <initializer_list>
#include <string_view>

class QVBoxLayout;
class QWidget;

namespace ostrel {

class OstrelButton;
class ZOLShellLabel;

/// A button of the janitor's. The handler may delete it.
[[nodiscard]] OstrelButton* janitorButton(
    const JanitorButton& button, std::function<void()> handler, int height = 28);

/// Views side by side that are about one thing, which is their name for assistive technology: their buttons
/// may say the same as others.
[[nodiscard]] QWidget* namedRow(std::string_view name, std::initializer_list<QWidget*> views, int width);

/// Views below each other, all as wide as their body. What is added belongs to it. Main thread.
class JanitorColumn {
public:
    explicit JanitorColumn(int width);

    [[nodiscard]] QWidget* view() const { return view_; }
    [[nodiscard]] int width() const { return width_; }

    void add(QWidget* view) const;
    /// Of its own width, at the left.
    void addNarrow(QWidget* view) const;
    void gap(int height) const;
    /// A rule with room around it.
    void rule() const;
    /// A text of at most that many lines; nothing for an empty one.
    void text(std::string_view text, double size, const ThemedColor& color, int lines,
        QFont::Weight weight = QFont::Normal) const;
    /// The two lines that tell how it goes.
    void status(std::string_view status, std::string_view lastAction) const;

private:
    QWidget* view_;
    QVBoxLayout* column_;
    int width_;
};

} // namespace ostrel
