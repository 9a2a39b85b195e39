// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointF>
#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace ostrel {

/// The tool tip of a view that says something else at each place: it follows the pointer, also once it is
/// up, and is taken away with it. A member of its view. Main thread.
class HoverTip final : public QObject {
public:
    /// `textAt` gives the text at a place of the view; empty for none.
    HoverTip(QWidget& view, std::function<QString(QPointF)> textAt);

    /// To be called when what the view says has changed.
    void renew();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow(QPointF at);
    void clear();
    void show(const QString& text);

    QWidget& view_;
    std::function<QString(QPointF)> textAt_;
    std::optional<QPointF> at_; ///< where the pointer is, while it is over the view
};

} // namespace ostrel
