// SPDX-License-Identifier: Apache-2.0
#include "panel/ProcessRowView.h"

#include "core/Text.h"
#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/PanelMenu.h"
#include "design/controls/ShellRow.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"
#include "panel/WorkloadsText.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPainter>

#include <functional>
#include <string>

namespace ostrel {

namespace {

constexpr int sideInset = 4;
constexpr int spacing = 7;
constexpr int pidWidth = 52;
constexpr int tagWidth = 48;
constexpr int cpuWidth = 42;
constexpr int memoryWidth = 64;
constexpr int buttonWidth = 96;
constexpr int buttonHeight = 34;
constexpr int nameResistance = 250;
constexpr double ringInset = 2;

ThemedColor colorOf(CpuColor color)
{
    switch (color) {
    case CpuColor::redBright:
        return OstrelStyle::redBright;
    case CpuColor::amber:
        return OstrelStyle::amber;
    case CpuColor::muted:
        break;
    }
    return OstrelStyle::muted;
}

ZOLShellLabel* figure(const std::string& text, double size, QFont::Weight weight, const ThemedColor& color,
    int width, Qt::Alignment alignment = Qt::AlignRight)
{
    // As high as the row, which centres its text.
    auto* label = elidedLabel(utf16(text), size, weight, color);
    label->setFixedWidth(width);
    label->setAlignment(alignment | Qt::AlignVCenter);
    return label;
}

ZOLShellLabel* nameLabel(const ProcessRow& row)
{
    auto* label = elidedLabel(utf16(row.name), 11, QFont::DemiBold, OstrelStyle::ink);
    label->setToolTip(plainToolTip(utf16(row.tip)));
    if (!row.nameLabel.empty())
        label->setAccessibleName(utf16(row.nameLabel));
    return label;
}

} // namespace

ProcessRowView::ProcessRowView(
    const OstrelData::Proc& proc, bool isProtected, Workloads& workloads, QWidget* parent)
    : QWidget(parent)
    , proc_(proc)
    , isProtected_(isProtected)
    , workloads_(workloads)
{
    const ProcessRow row = processRow(proc, isProtected);
    setFixedSize(contentWidth, height);
    setToolTip(plainToolTip(utf16(row.tip)));
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(utf16(row.name + " · pid " + row.pid));
    setAccessibleMenu(*this);
    setObjectName(utf16("process-" + row.pid));
    // The keyboard reaches the menu through the button; where that is off, through the row.
    if (isProtected)
        setFocusPolicy(Qt::TabFocus);
    button_ = new OstrelButton(
        utf16(row.button), buttonWidth, [this] { workloads_.killProcess(proc_.pid, proc_.name, proc_.cmd); },
        buttonHeight);
    ostrelTip(button_, utf16(row.buttonTip));
    button_->setObjectName(utf16("stop-" + row.pid));
    button_->setEnabled(!isProtected);

    auto* tag = figure(row.tag, 8, QFont::DemiBold, OstrelStyle::muted, tagWidth);
    tag->setToolTip(plainToolTip(utf16(row.tagTip)));
    auto* across = new ShellRow(this, spacing);
    across->setContentsMargins(sideInset, 0, sideInset, 0);
    across->add(figure(row.pid, 9, QFont::Normal, OstrelStyle::muted, pidWidth));
    across->add(nameLabel(row), nameResistance);
    across->add(flexSpacer());
    across->add(tag);
    across->add(figure(row.cpu, 10, QFont::DemiBold, colorOf(row.cpuColor), cpuWidth, Qt::AlignLeft));
    across->add(figure(row.memory, 11, QFont::DemiBold, OstrelStyle::ink, memoryWidth));
    across->add(button_);
}

QWidget& ProcessRowView::keyboardView()
{
    if (isProtected_)
        return *this;
    return *button_;
}

void ProcessRowView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const auto mode = appearanceOf(*this);
    const double line = hairline(painter);
    const QRectF whole = snapped(painter, QRectF(rect()));
    drawRule(painter, QRectF(whole.left(), whole.bottom() - line, whole.width(), line),
        OstrelStyle::hair.in(mode));
    if (hasFocus())
        drawFocusRing(
            painter, QRectF(rect()), ringInset, OstrelStyle::radius - ringInset, OstrelStyle::ink.in(mode));
}

void ProcessRowView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byPointer = event->reason() == QContextMenuEvent::Mouse;
    showMenu(byPointer ? std::optional(event->globalPos()) : std::nullopt);
}

void ProcessRowView::keyPressEvent(QKeyEvent* event)
{
    // Of keyboards without a key for menus.
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier)
        showMenu(std::nullopt);
    else
        QWidget::keyPressEvent(event);
}

void ProcessRowView::showMenu(std::optional<QPoint> pointer)
{
    // Owned by itself. The row may go while it is up, and with it all that the row holds.
    auto* menu = new PanelMenu(*this);
    const auto stop
        = [&workloads = workloads_, proc = proc_] { workloads.killProcess(proc.pid, proc.name, proc.cmd); };
    for (const ProcessMenuLine& line : processMenu(proc_, isProtected_)) {
        if (line.shown.empty()) {
            menu->addSeparator();
            continue;
        }
        menu->add({ .text = utf16(line.shown),
            .title = utf16(line.title),
            .size = line.size,
            .weight = line.strong ? QFont::DemiBold : QFont::Normal,
            .color = line.quiet ? OstrelStyle::muted : OstrelStyle::ink,
            .handler = line.enabled ? stop : std::function<void()>() });
    }
    const QPoint name = mapToGlobal(QPoint(sideInset + pidWidth + spacing, height / 2));
    menu->open(pointer.value_or(name), pointer.has_value());
}

} // namespace ostrel
