// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Menu.h"
#include "platform/qt/StatusNotifierTypes.h"

#include <QStringList>

#include <map>
#include <optional>

namespace platform {

/// A menu as the bus sees it: rows with numbers. The numbers stay while the menu keeps its shape; a menu of
/// another shape gets new ones, so a press on a row that is gone can't reach another row.
class DBusMenuModel {
public:
    static constexpr int root = 0;

    /// What an update changed.
    struct Change {
        bool layout = false; ///< rows came or went
        BusMenuPropertiesList properties; ///< rows that stayed and look different
    };

    DBusMenuModel();

    /// Takes in the rows.
    Change update(Menu menu);

    [[nodiscard]] bool has(int id) const { return rows_.contains(id); }
    /// Raised with each change of the layout.
    [[nodiscard]] uint revision() const { return revision_; }
    /// The row and what is below it to `depth` levels, all of it for -1. Only the named properties, all for
    /// none.
    [[nodiscard]] BusMenuLayout layout(int id, int depth, const QStringList& names) const;
    /// Properties that hold their default are left out.
    [[nodiscard]] QVariantMap properties(int id, const QStringList& names) const;
    /// The row's action; empty for a row that can't be chosen.
    [[nodiscard]] Job action(int id) const;

private:
    struct Row {
        MenuItem item; ///< without its submenu
        std::vector<int> children;
    };

    int add(MenuItem item);
    [[nodiscard]] bool sameShape(const Row& row, const Menu& menu) const;
    void refresh(int id, MenuItem item, Change& change);

    std::map<int, Row> rows_;
    int nextId_ = 1;
    uint revision_ = 1;
};

} // namespace platform
