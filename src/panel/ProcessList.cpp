// SPDX-License-Identifier: Apache-2.0
#include "panel/ProcessList.h"

#include "panel/PanelSize.h"
#include "panel/ProcessRowView.h"

#include <QEvent>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace ostrel {

namespace {

/// Rows made beyond the ones in view, at either end: what the keyboard comes to next.
constexpr int margin = 4;

} // namespace

ProcessList::ProcessList(std::vector<OstrelData::Proc> procs, Workloads& workloads)
    : procs_(std::move(procs))
    , rules_(workloads.rules())
    , workloads_(workloads)
{
    setFixedSize(contentWidth, static_cast<int>(procs_.size()) * ProcessRowView::height);
}

void ProcessList::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!page())
        return;
    // Scrolling moves the page.
    page()->installEventFilter(this);
    makeRows();
}

void ProcessList::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    makeRows();
}

bool ProcessList::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        makeRows();
    return QWidget::eventFilter(watched, event);
}

void ProcessList::makeRows()
{
    if (!isVisible() || !page() || !page()->parentWidget())
        return;
    const QWidget& viewport = *page()->parentWidget();
    const int top = mapFrom(&viewport, QPoint()).y();
    const int last = (top + viewport.height()) / ProcessRowView::height + margin;
    const int end = std::min(last, static_cast<int>(procs_.size()) - 1);
    for (int at = std::max(0, top / ProcessRowView::height - margin); at <= end; ++at)
        if (!rows_.contains(at))
            makeRow(at);
}

void ProcessList::makeRow(int at)
{
    const OstrelData::Proc& proc = procs_[static_cast<std::size_t>(at)];
    auto* row = new ProcessRowView(proc, rules_.protects(proc.name, proc.cmd), workloads_, this);
    row->move(0, at * ProcessRowView::height);
    row->show();
    // The keyboard goes down the list, whatever was made first.
    const auto place = rows_.emplace(at, row).first;
    if (place != rows_.begin())
        setTabOrder(&std::prev(place)->second->keyboardView(), &row->keyboardView());
    if (std::next(place) != rows_.end())
        setTabOrder(&row->keyboardView(), &std::next(place)->second->keyboardView());
}

} // namespace ostrel
