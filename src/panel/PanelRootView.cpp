// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelRootView.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "panel/PanelKeys.h"
#include "panel/PanelSize.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>

#include <optional>
#include <string>
#include <utility>

namespace ostrel {

namespace {

/// What the key types without control, option and command: those turn a letter into nothing, or into a
/// control character.
std::string characters(const QKeyEvent& event)
{
    const int key = event.key();
    // Below the toolkit's own keys, a key's number is the character on it.
    return key > 0 && key < 0x80 ? QString(QChar(key)).toLower().toStdString() : std::string();
}

bool takesText(const QWidget* view) { return view && view->testAttribute(Qt::WA_InputMethodEnabled); }

std::optional<QAbstractSlider::SliderAction> sliderAction(int key)
{
    switch (key) {
    case Qt::Key_Up:
        return QAbstractSlider::SliderSingleStepSub;
    case Qt::Key_Down:
        return QAbstractSlider::SliderSingleStepAdd;
    case Qt::Key_PageUp:
        return QAbstractSlider::SliderPageStepSub;
    case Qt::Key_PageDown:
        return QAbstractSlider::SliderPageStepAdd;
    case Qt::Key_Home:
        return QAbstractSlider::SliderToMinimum;
    case Qt::Key_End:
        return QAbstractSlider::SliderToMaximum;
    default:
        return std::nullopt;
    }
}

} // namespace

PanelRootView::PanelRootView(Actions actions)
    : actions_(std::move(actions))
{
    setAccessibleName("OSTREL");
    setFocusPolicy(Qt::StrongFocus);
}

void PanelRootView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Color ground = OstrelStyle::bg.in(appearanceOf(*this));
    // A window that can't be seen through is cut to shape, and must have no blended pixels at the cut.
    if (!window()->testAttribute(Qt::WA_TranslucentBackground))
        painter.fillRect(rect(), qColor(ground));
    else
        fillRounded(painter, QRectF(rect()), panelCornerRadius, ground);
    outlineRounded(
        painter, QRectF(rect()), panelCornerRadius - 0.5, OstrelStyle::hair.in(appearanceOf(*this)));
}

void PanelRootView::keyPressEvent(QKeyEvent* event)
{
    const std::string typed = characters(*event);
    const Qt::KeyboardModifiers held = event->modifiers();
    const PanelKeyAction action = panelKeyAction({ .characters = typed,
        .escape = event->key() == Qt::Key_Escape,
        .control = held.testFlag(Qt::ControlModifier),
        .option = held.testFlag(Qt::AltModifier),
        .command = held.testFlag(Qt::MetaModifier),
        .inTextField = takesText(focusWidget()) });
    switch (action.kind) {
    case PanelKeyAction::Kind::escape:
        return actions_.escape(action.reason);
    case PanelKeyAction::Kind::close:
        return actions_.close(action.reason);
    case PanelKeyAction::Kind::help:
        return actions_.help();
    case PanelKeyAction::Kind::tab:
        return actions_.switchMode(action.mode);
    case PanelKeyAction::Kind::none:
        break;
    }
    if (!scrolls(event->key()))
        QWidget::keyPressEvent(event);
}

bool PanelRootView::scrolls(int key)
{
    const auto step = sliderAction(key);
    if (!step || !scroll_)
        return false;
    scroll_->verticalScrollBar()->triggerAction(*step);
    return true;
}

} // namespace ostrel
