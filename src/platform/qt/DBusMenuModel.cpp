// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/DBusMenuModel.h"

#include <utility>

namespace platform {

namespace {

/// Hosts read an underscore as the mark of a mnemonic.
QString label(const std::string& title) { return QString::fromStdString(title).replace('_', "__"); }

QVariantMap describe(const MenuItem& item, bool hasChildren)
{
    if (item.separator)
        return { { "type", "separator" } };
    QVariantMap properties { { "label", label(item.title) } };
    if (!item.action && !hasChildren)
        properties.insert("enabled", false);
    if (item.checked) {
        properties.insert("toggle-type", "checkmark");
        properties.insert("toggle-state", *item.checked ? 1 : 0);
    }
    if (hasChildren)
        properties.insert("children-display", "submenu");
    if (!item.toolTip.empty())
        properties.insert("accessible-desc", QString::fromStdString(item.toolTip));
    return properties;
}

} // namespace

DBusMenuModel::DBusMenuModel() { rows_.emplace(root, Row {}); }

int DBusMenuModel::add(MenuItem item)
{
    const int id = nextId_++;
    Menu below = std::exchange(item.submenu, {});
    std::vector<int> children;
    children.reserve(below.size());
    for (MenuItem& child : below)
        children.push_back(add(std::move(child)));
    rows_.insert_or_assign(id, Row { std::move(item), std::move(children) });
    return id;
}

bool DBusMenuModel::sameShape(const Row& row, const Menu& menu) const
{
    if (row.children.size() != menu.size())
        return false;
    for (std::size_t at = 0; at < menu.size(); ++at) {
        const Row& child = rows_.at(row.children[at]);
        if (child.item.separator != menu[at].separator || !sameShape(child, menu[at].submenu))
            return false;
    }
    return true;
}

void DBusMenuModel::refresh(int id, MenuItem item, Change& change)
{
    Row& row = rows_.at(id);
    Menu below = std::exchange(item.submenu, {});
    const QVariantMap before = describe(row.item, !row.children.empty());
    row.item = std::move(item);
    if (id != root) {
        QVariantMap now = describe(row.item, !row.children.empty());
        if (now != before) {
            // What a row no longer has goes back to its default.
            static const QVariantMap defaults { { "enabled", true }, { "toggle-type", "" },
                { "toggle-state", -1 }, { "accessible-desc", "" } };
            for (const auto& [name, value] : defaults.asKeyValueRange())
                if (before.contains(name) && !now.contains(name))
                    now.insert(name, value);
            change.properties.push_back({ id, now });
        }
    }
    for (std::size_t at = 0; at < below.size(); ++at)
        refresh(row.children[at], std::move(below[at]), change);
}

DBusMenuModel::Change DBusMenuModel::update(Menu menu)
{
    Change change;
    if (sameShape(rows_.at(root), menu)) {
        MenuItem whole;
        whole.submenu = std::move(menu);
        refresh(root, std::move(whole), change);
        return change;
    }
    rows_.clear();
    std::vector<int> children;
    for (MenuItem& item : menu)
        children.push_back(add(std::move(item)));
    rows_.emplace(root, Row { {}, std::move(children) });
    ++revision_;
    change.layout = true;
    return change;
}

QVariantMap DBusMenuModel::properties(int id, const QStringList& names) const
{
    const auto row = rows_.find(id);
    if (row == rows_.end())
        return {};
    const bool hasChildren = !row->second.children.empty();
    QVariantMap all = id == root ? QVariantMap { { "children-display", "submenu" } }
                                 : describe(row->second.item, hasChildren);
    if (names.isEmpty())
        return all;
    QVariantMap wanted;
    for (const QString& name : names)
        if (all.contains(name))
            wanted.insert(name, all.value(name));
    return wanted;
}

BusMenuLayout DBusMenuModel::layout(int id, int depth, const QStringList& names) const
{
    BusMenuLayout layout { .id = id, .properties = properties(id, names), .children = {} };
    const auto row = rows_.find(id);
    if (row == rows_.end() || depth == 0)
        return layout;
    for (const int child : row->second.children)
        layout.children.push_back(this->layout(child, depth < 0 ? depth : depth - 1, names));
    return layout;
}

Job DBusMenuModel::action(int id) const
{
    const auto row = rows_.find(id);
    return row == rows_.end() || row->second.item.separator ? Job() : row->second.item.action;
}

} // namespace platform
