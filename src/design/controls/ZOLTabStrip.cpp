// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLTabStrip.h"

#include "design/Accessibility.h"
#include "design/Utf8.h"
#include "design/controls/ShellRow.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLShellButton.h"

#include <QStringList>

#include <cstddef>
#include <utility>

namespace ostrel {

namespace {

constexpr int stripHeight = 30;
constexpr int tabSpacing = 3;

} // namespace

ZOLTabStrip::ZOLTabStrip(std::vector<Tab> tabs, const std::optional<std::string>& selected, int width,
    int tabWidth, OnSelect onSelect, QWidget* parent)
    : QWidget(parent)
    , tabs_(std::move(tabs))
    , onSelect_(std::move(onSelect))
{
    if (selected)
        selected_ = *selected;
    else if (!tabs_.empty())
        selected_ = tabs_.front().id;
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName("views");
    setFixedSize(width, stripHeight);
    auto* row = new ShellRow(this, tabSpacing);
    int key = 0;
    for (const Tab& tab : tabs_)
        row->add(makeButton(tab, ++key, tabWidth));
    row->add(ZOLAppShellStyle::spacer());
    showSelected();
}

ZOLShellButton* ZOLTabStrip::makeButton(const Tab& tab, int key, int width)
{
    const auto press = [this, id = tab.id] {
        select(id);
        // A copy: the callback may delete the strip. The button keeps this handler, and the id, meanwhile.
        const auto onSelect = onSelect_;
        if (onSelect)
            onSelect(id);
    };
    auto* button = new ZOLShellButton(tab.title, width, press, stripHeight);
    button->setKind(ZOLShellButton::Kind::navigation);
    button->setObjectName(utf16(tab.id));
    if (tab.hint)
        button->setToolTip(QString("%1 · key %2").arg(*tab.hint, QString::number(key)));
    button->setAccessibleName(QString("%1 view · key %2").arg(tab.title, QString::number(key)));
    buttons_[tab.id] = button;
    return button;
}

void ZOLTabStrip::select(const std::string& id)
{
    if (!buttons_.contains(id))
        return;
    selected_ = id;
    showSelected();
}

void ZOLTabStrip::selectNone()
{
    selected_.clear();
    showSelected();
}

void ZOLTabStrip::setOnSelect(OnSelect onSelect) { onSelect_ = std::move(onSelect); }

std::optional<std::string> ZOLTabStrip::id(int forKey) const
{
    if (forKey < 1 || static_cast<std::size_t>(forKey) > tabs_.size())
        return std::nullopt;
    return tabs_[static_cast<std::size_t>(forKey) - 1].id;
}

QString ZOLTabStrip::keyMap() const
{
    QStringList keys;
    for (const Tab& tab : tabs_)
        keys.push_back(QString("%1 %2").arg(QString::number(keys.size() + 1), tab.title));
    return keys.join(" · ");
}

void ZOLTabStrip::showSelected()
{
    for (const auto& [id, button] : buttons_)
        button->setActive(id == selected_);
}

} // namespace ostrel
