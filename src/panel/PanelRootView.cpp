// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelRootView.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>

#include <utility>

namespace ostrel {

PanelRootView::PanelRootView(Actions actions)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint)
    , actions_(std::move(actions))
{
    setWindowTitle("OSTREL");
    setAccessibleName("OSTREL");
    setFocusPolicy(Qt::StrongFocus);
}

void PanelRootView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), resolved(OstrelStyle::bg, *this));
    painter.setPen(resolved(OstrelStyle::hair, *this));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void PanelRootView::keyPressEvent(QKeyEvent* event)
{
    constexpr auto chords = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const bool plain = !(event->modifiers() & chords);
    const int digit = event->key() - Qt::Key_1;
    if (event->key() == Qt::Key_Escape)
        actions_.close("esc");
    else if (event->key() == Qt::Key_W && (event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)))
        actions_.close("cmd-w");
    else if (plain && digit >= 0 && digit < static_cast<int>(ostrelModeCount))
        actions_.switchMode(ostrelModes()[static_cast<std::size_t>(digit)].mode);
    else
        QWidget::keyPressEvent(event);
}

void PanelRootView::closeEvent(QCloseEvent* event)
{
    // The window is kept for the next opening; closing it is the panel's to decide.
    event->ignore();
    actions_.close("x");
}

} // namespace ostrel
