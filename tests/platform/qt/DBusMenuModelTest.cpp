// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/DBusMenuModel.h"

#include <set>

#include <gtest/gtest.h>

namespace {

using platform::BusMenuLayout;
using platform::DBusMenuModel;
using platform::Menu;
using platform::MenuItem;

constexpr int root = DBusMenuModel::root;
const platform::Job nothing = [] {};

/// A headline, a line, a row to press, and a submenu of a checked row and a grey one.
Menu menu()
{
    return { { .title = "cpu_1 & 2" }, { .separator = true }, { .title = "show", .action = nothing },
        { .title = "more",
            .submenu = { { .title = "pin", .toolTip = "stays", .checked = true, .action = nothing },
                { .title = "grey" } } } };
}

/// The numbers of all rows below one.
std::set<int> ids(const BusMenuLayout& row)
{
    std::set<int> all;
    for (const BusMenuLayout& child : row.children) {
        all.insert(child.id);
        all.merge(ids(child));
    }
    return all;
}

TEST(DBusMenuModel, RowsCarryOnlyThePropertiesThatArentDefaultsCutToWhatIsAskedFor)
{
    DBusMenuModel model;
    EXPECT_TRUE(model.update(menu()).layout);
    const BusMenuLayout all = model.layout(root, -1, {});
    EXPECT_EQ(all.properties, (QVariantMap { { "children-display", "submenu" } }));
    ASSERT_EQ(all.children.size(), 4);
    ASSERT_EQ(all.children[3].children.size(), 2);
    const std::pair<BusMenuLayout, QVariantMap> cases[] {
        // An underscore would be read as a mnemonic.
        { all.children[0], { { "label", "cpu__1 & 2" }, { "enabled", false } } },
        { all.children[1], { { "type", "separator" } } },
        { all.children[2], { { "label", "show" } } },
        { all.children[3], { { "label", "more" }, { "children-display", "submenu" } } },
        { all.children[3].children[0],
            { { "label", "pin" }, { "toggle-type", "checkmark" }, { "toggle-state", 1 },
                { "accessible-desc", "stays" } } },
    };
    for (const auto& [row, properties] : cases)
        EXPECT_EQ(row.properties, properties) << row.id;
    EXPECT_EQ(ids(all).size(), 6U);

    EXPECT_TRUE(model.layout(root, 0, {}).children.isEmpty());
    const BusMenuLayout one = model.layout(root, 1, { "label" });
    ASSERT_EQ(one.children.size(), 4);
    EXPECT_EQ(one.children[0].properties, (QVariantMap { { "label", "cpu__1 & 2" } }));
    EXPECT_TRUE(one.children[1].properties.isEmpty());
    EXPECT_TRUE(one.children[3].children.isEmpty());
    EXPECT_EQ(model.layout(one.children[3].id, 1, {}).children.size(), 2);
    EXPECT_TRUE(model.layout(9999, -1, {}).children.isEmpty());
}

TEST(DBusMenuModel, RowsOfOneShapeKeepTheirNumbersAndTellWhatLooksDifferent)
{
    DBusMenuModel model;
    model.update(menu());
    const auto before = ids(model.layout(root, -1, {}));
    const uint revision = model.revision();
    const auto same = model.update(menu());
    EXPECT_FALSE(same.layout);
    EXPECT_TRUE(same.properties.isEmpty());

    Menu next = menu();
    next[0] = { .title = "cpu 2", .action = nothing };
    next[3].submenu[0] = { .title = "pin" };
    int pressed = 0;
    next[2].action = [&pressed] { ++pressed; };
    const auto change = model.update(next);
    EXPECT_FALSE(change.layout);
    EXPECT_EQ(ids(model.layout(root, -1, {})), before);
    EXPECT_EQ(model.revision(), revision);
    // What a row no longer has goes back to its default: a host would go on drawing a check box.
    const QVariantMap expected[] { { { "label", "cpu 2" }, { "enabled", true } },
        { { "label", "pin" }, { "enabled", false }, { "toggle-type", "" }, { "toggle-state", -1 },
            { "accessible-desc", "" } } };
    ASSERT_EQ(change.properties.size(), 2);
    for (int at = 0; at < 2; ++at)
        EXPECT_EQ(change.properties[at].properties, expected[at]) << at;
    model.action(model.layout(root, 1, {}).children[2].id)();
    EXPECT_EQ(pressed, 1) << "the row has the new action";
}

TEST(DBusMenuModel, AMenuOfAnotherShapeGetsNewNumbers)
{
    const Menu shapes[] { { { .title = "a" } }, { { .separator = true } },
        { { .title = "a", .submenu = { { .title = "b" } } } }, { { .title = "a" }, { .title = "b" } }, {} };
    DBusMenuModel model;
    std::set<int> used;
    for (const Menu& first : { menu(), Menu { { .title = "x" }, { .title = "y" }, { .title = "z" } } })
        for (const Menu& shape : shapes) {
            model.update(first);
            const uint revision = model.revision();
            EXPECT_TRUE(model.update(shape).layout);
            EXPECT_GT(model.revision(), revision);
            for (const int id : ids(model.layout(root, -1, {})))
                EXPECT_TRUE(used.insert(id).second) << id;
        }
}

TEST(DBusMenuModel, OnlyARowWithAnActionCanBePressed)
{
    DBusMenuModel model;
    model.update(menu());
    const auto rows = model.layout(root, 1, {}).children;
    for (const auto& [id, pressable] : { std::pair { rows[0].id, false }, { rows[1].id, false },
             { rows[2].id, true }, { rows[3].id, false }, { root, false }, { 9999, false }, { -1, false } })
        EXPECT_EQ(static_cast<bool>(model.action(id)), pressable) << id;
}

} // namespace
