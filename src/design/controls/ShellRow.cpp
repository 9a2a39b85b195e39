// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ShellRow.h"

#include <QLabel>
#include <QSizePolicy>
#include <QWidget>

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <utility>

namespace ostrel {

namespace {

bool stretches(QLayoutItem& item)
{
    return item.widget() && item.widget()->sizePolicy().horizontalStretch() > 0;
}

/// Takes `excess` from the widths that are pointed at, from the widest first; gives what is left of it.
int shrink(std::vector<int*>& widths, int excess)
{
    std::ranges::sort(widths, [](const int* a, const int* b) { return *a > *b; });
    for (std::size_t level = 1; level <= widths.size() && excess > 0; ++level) {
        // All of the widest down to the next one, or as far as it takes.
        const int next = level < widths.size() ? *widths[level] : 0;
        const int each = std::min(*widths[0] - next, (excess + int(level) - 1) / int(level));
        for (std::size_t at = 0; at < level; ++at)
            *widths[at] -= each;
        excess -= each * int(level);
    }
    return excess;
}

} // namespace

ShellRow::ShellRow(QWidget* owner, int spacing)
    : QLayout(owner)
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(spacing);
}

ShellRow::~ShellRow() = default;

void ShellRow::add(QWidget* view, int resistance)
{
    addChildWidget(view);
    parts_.push_back({ std::make_unique<QWidgetItem>(view), resistance });
    invalidate();
}

void ShellRow::replace(QWidget* old, QWidget* view)
{
    const auto part
        = std::ranges::find_if(parts_, [old](const Part& each) { return each.item->widget() == old; });
    if (part == parts_.end())
        return;
    addChildWidget(view);
    part->item = std::make_unique<QWidgetItem>(view);
    // The keyboard reaches it where it stands; the order is told only of views that take the keyboard.
    old->setFocusPolicy(Qt::TabFocus);
    QWidget::setTabOrder(old, view);
    // The replacement may happen in a handler of the old one.
    old->hide();
    old->deleteLater();
    invalidate();
}

void ShellRow::addItem(QLayoutItem* item) { parts_.push_back({ std::unique_ptr<QLayoutItem>(item) }); }

int ShellRow::count() const { return static_cast<int>(parts_.size()); }

QLayoutItem* ShellRow::itemAt(int index) const
{
    return index >= 0 && index < count() ? parts_[static_cast<std::size_t>(index)].item.get() : nullptr;
}

QLayoutItem* ShellRow::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    QLayoutItem* item = parts_[static_cast<std::size_t>(index)].item.release();
    parts_.erase(parts_.begin() + index);
    return item;
}

QSize ShellRow::around(QSize content) const
{
    const QMargins margins = contentsMargins();
    return content + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize ShellRow::sizeHint() const
{
    QSize all(0, 0);
    int shown = 0;
    for (const Part& part : parts_) {
        if (part.item->isEmpty())
            continue;
        const QSize hint = part.item->sizeHint();
        all = QSize(all.width() + hint.width() + (shown++ > 0 ? spacing() : 0),
            std::max(all.height(), hint.height()));
    }
    return around(all);
}

QSize ShellRow::minimumSize() const
{
    int shown = 0;
    QSize all(0, 0);
    for (const Part& part : parts_) {
        if (part.item->isEmpty())
            continue;
        const int width = part.resistance < required ? 0 : part.item->sizeHint().width();
        all = QSize(all.width() + width + (shown++ > 0 ? spacing() : 0),
            std::max(all.height(), part.item->minimumSize().height()));
    }
    return around(all);
}

std::vector<int> ShellRow::widthsIn(int room) const
{
    std::vector<int> widths;
    int stretching = 0;
    int shown = 0;
    for (const Part& part : parts_) {
        const bool here = !part.item->isEmpty();
        shown += here ? 1 : 0;
        stretching += here && stretches(*part.item) ? 1 : 0;
        widths.push_back(here ? part.item->sizeHint().width() : 0);
    }
    int spare = room - std::max(0, shown - 1) * spacing() - std::accumulate(widths.begin(), widths.end(), 0);
    std::map<int, std::vector<int*>> yielding;
    for (std::size_t at = 0; at < parts_.size(); ++at) {
        const bool here = !parts_[at].item->isEmpty();
        if (here && parts_[at].resistance < required)
            yielding[parts_[at].resistance].push_back(&widths[at]);
        if (here && spare > 0 && stretching > 0 && stretches(*parts_[at].item)) {
            const int share = spare / stretching--;
            widths[at] += share;
            spare -= share;
        }
    }
    int excess = -spare;
    for (auto& [resistance, equals] : yielding)
        if (excess > 0)
            excess = shrink(equals, excess);
    return widths;
}

void ShellRow::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    const QRect inside = rect.marginsRemoved(contentsMargins());
    const std::vector<int> widths = widthsIn(inside.width());
    int left = inside.left();
    for (std::size_t at = 0; at < parts_.size(); ++at) {
        QLayoutItem& item = *parts_[at].item;
        if (item.isEmpty())
            continue;
        if (qobject_cast<QLabel*>(item.widget())) {
            // It centres its text itself, to the half point, as the buttons beside it do.
            item.widget()->setGeometry(left, inside.top(), widths[at], inside.height());
        } else {
            const int height = item.sizeHint().height();
            // Rounded up: a view half a point too high keeps its foot, where the letters are.
            const int room = inside.height() - height;
            const int top = inside.top() + (room >= 0 ? room / 2 : (room - 1) / 2);
            item.setGeometry(QRect(left, top, widths[at], height));
        }
        left += widths[at] + spacing();
    }
}

} // namespace ostrel
