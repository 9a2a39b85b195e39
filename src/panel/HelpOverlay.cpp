// SPDX-License-Identifier: Apache-2.0
#include "panel/HelpOverlay.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/HelpText.h"

#include <QGraphicsOpacityEffect>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QVBoxLayout>

#include <string>
#include <utility>

namespace ostrel {

namespace {

constexpr int sideInset = 20;
constexpr int endInset = 16;
constexpr int rowSpacing = 3;
constexpr int fadeMilliseconds = 180;

} // namespace

HelpOverlay::HelpOverlay(QWidget& root, std::function<void()> dismiss)
    : QWidget(&root)
    , dismiss_(std::move(dismiss))
{
    setObjectName(QLatin1String(identifier));
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName("panel keys help – press escape or click to close");
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(sideInset, endInset, sideInset, endInset);
    column->setSpacing(rowSpacing);
    bool heading = true;
    for (const std::string& row : helpRows()) {
        auto* label = heading ? lineLabel(utf16(row), 11, QFont::DemiBold, OstrelStyle::ink)
                              : lineLabel(utf16(row), 10, QFont::Normal, OstrelStyle::muted);
        // The click is for the box.
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        column->addWidget(label, 0, Qt::AlignLeft);
        heading = false;
    }
    adjustSize();
    move((root.width() - width()) / 2, (root.height() - height()) / 2);
    raise();
    show();
}

void HelpOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const auto appearance = appearanceOf(*this);
    fillRounded(painter, QRectF(rect()), OstrelStyle::radius, OstrelStyle::bg.in(appearance));
    // The ground is the panel's own: without a line the box would have no edge.
    outlineRounded(painter, QRectF(rect()), OstrelStyle::radius, OstrelStyle::hair.in(appearance));
}

void HelpOverlay::mousePressEvent(QMouseEvent* event) { event->accept(); }

void HelpOverlay::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !rect().contains(event->position().toPoint()))
        return;
    // A copy: the callback lets the box go.
    const auto dismiss = dismiss_;
    dismiss();
}

void HelpOverlay::leave(bool animated)
{
    if (!animated) {
        // Nobody finds it any more, though it may be in the middle of an event of its own.
        setObjectName({});
        hide();
        deleteLater();
        return;
    }
    if (graphicsEffect())
        return;
    auto* opacity = new QGraphicsOpacityEffect(this);
    setGraphicsEffect(opacity);
    auto* fade = new QPropertyAnimation(opacity, "opacity", this);
    fade->setDuration(fadeMilliseconds);
    fade->setStartValue(1.0);
    fade->setEndValue(0.0);
    connect(fade, &QPropertyAnimation::finished, this, [this] { leave(false); });
    fade->start();
}

} // namespace ostrel
