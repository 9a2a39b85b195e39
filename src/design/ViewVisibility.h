// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/WindowOcclusion.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QWidget;
class QWindow;

namespace ostrel {

/// Whether anything of a view's window can be seen, and when that changes. The view calls `attach` from its
/// show event and `detach` from its hide event. Main thread.
class ViewVisibility final : public QObject {
public:
    ViewVisibility(QWidget& view, platform::WindowOcclusion& occlusion, std::function<void()> changed);
    ~ViewVisibility() override;

    /// Follows the window that the view stands in now.
    void attach();
    /// Follows none.
    void detach();

    /// True when the view is shown in a window that is on screen, isn't minimised, and isn't wholly covered.
    [[nodiscard]] bool visible() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget& view_;
    platform::WindowOcclusion& occlusion_;
    std::function<void()> changed_;
    QPointer<QWidget> window_;
    QPointer<QWindow> handle_;
    std::unique_ptr<platform::Observation> observation_;
};

} // namespace ostrel
