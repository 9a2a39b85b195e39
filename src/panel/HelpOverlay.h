// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <functional>

namespace ostrel {

/// The panel's keys in a box over the middle of it. Main thread.
class HelpOverlay final : public QWidget {
public:
    /// What it is found by.
    static constexpr auto identifier = "help-overlay";

    /// Stands in the middle of `root` and above all in it. `dismiss` is called on a click.
    HelpOverlay(QWidget& root, std::function<void()> dismiss);

    /// Fades away, and then destroys itself; at once without `animated`.
    void leave(bool animated);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    std::function<void()> dismiss_;
};

} // namespace ostrel
