// SPDX-License-Identifier: Apache-2.0
#include "design/ViewVisibility.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace ostrel {

ViewVisibility::ViewVisibility(
    QWidget& view, platform::WindowOcclusion& occlusion, std::function<void()> changed)
    : view_(view)
    , occlusion_(occlusion)
    , changed_(std::move(changed))
{
}

ViewVisibility::~ViewVisibility() = default;

void ViewVisibility::attach()
{
    detach();
    window_ = view_.window();
    window_->installEventFilter(this);
    handle_ = window_->windowHandle();
    if (!handle_)
        return;
    handle_->installEventFilter(this);
    observation_ = occlusion_.observe(handle_->winId(), [this] { changed_(); });
}

void ViewVisibility::detach()
{
    observation_.reset();
    if (window_)
        window_->removeEventFilter(this);
    if (handle_)
        handle_->removeEventFilter(this);
    window_.clear();
    handle_.clear();
}

bool ViewVisibility::visible() const
{
    return window_ && handle_ && view_.isVisible() && !window_->isMinimized() && handle_->isExposed()
        && !occlusion_.covered(handle_->winId());
}

bool ViewVisibility::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Expose || event->type() == QEvent::WindowStateChange)
        changed_();
    return false;
}

} // namespace ostrel
