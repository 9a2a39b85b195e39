// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/DBusMenuModel.h"

#include <map>
#include <set>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using platform::BusMenuLayout;
using platform::DBusMenuModel;
using platform::Menu;
using platform::MenuItem;

const platform::Job nothing = [] {};

/// A headline, a line, a row to press, and a submenu of a checked row and a grey one.
Menu menu()
{
    return { { .title = "cpu_1 & 2" }, { .separator = true }, { .title = "show", .action = nothing },
        { .title = "more",
            .submenu = { { .title = "pin", .toolTip = "stays", .checked = true, .action = nothing },
                { .title = "grey" } } } };
}

void collect(const BusMenuLayout& row, std::set<int>& ids)
{
    ids.insert(row.id);
    for (const BusMenuLayout& child : row.children)
        collect(child, ids);
}

std::set<int> ids(const DBusMenuModel& model)
{
    std::set<int> all;
    collect(model.layout(DBusMenuModel::root, -1, {}), all);
    return all;
}

TEST(DBusMenuModel, RowsCarryOnlyThePropertiesThatArentDefaults)
{
    DBusMenuModel model;
    EXPECT_TRUE(model.update(menu()).layout);
    const BusMenuLayout root = model.layout(DBusMenuModel::root, -1, {});
    ASSERT_EQ(root.children.size(), 4);
    EXPECT_EQ(root.properties, (QVariantMap { { "children-display", "submenu" } }));
    EXPECT_EQ(root.children[0].properties, (QVariantMap { { "label", "cpu__1 & 2" }, { "enabled", false } }))
        << "an underscore would be read as a mnemonic";
    EXPECT_EQ(root.children[1].properties, (QVariantMap { { "type", "separator" } }));
    EXPECT_EQ(root.children[2].properties, (QVariantMap { { "label", "show" } }));
    EXPECT_EQ(root.children[3].properties,
        (QVariantMap { { "label", "more" }, { "children-display", "submenu" } }));
    ASSERT_EQ(root.children[3].children.size(), 2);
    EXPECT_EQ(root.children[3].children[0].properties,
        (QVariantMap { { "label", "pin" }, { "toggle-type", "checkmark" }, { "toggle-state", 1 },
            { "accessible-desc", "stays" } }));
    EXPECT_EQ(ids(model).size(), 7U);
}

TEST(DBusMenuModel, ALayoutIsCutToItsDepthAndToTheNamedProperties)
{
    DBusMenuModel model;
    model.update(menu());
    EXPECT_TRUE(model.layout(DBusMenuModel::root, 0, {}).children.isEmpty());
    const BusMenuLayout one = model.layout(DBusMenuModel::root, 1, { "label" });
    ASSERT_EQ(one.children.size(), 4);
    EXPECT_EQ(one.children[0].properties, (QVariantMap { { "label", "cpu__1 & 2" } }));
    EXPECT_TRUE(one.children[1].properties.isEmpty());
    EXPECT_TRUE(one.children[3].children.isEmpty());
    const int more = one.children[3].id;
    EXPECT_EQ(model.layout(more, 1, {}).children.size(), 2);
    EXPECT_TRUE(model.layout(9999, -1, {}).children.isEmpty());
}

TEST(DBusMenuModel, RowsOfOneShapeKeepTheirNumbersAndTellWhatLooksDifferent)
{
    DBusMenuModel model;
    model.update(menu());
    const auto before = ids(model);
    const uint revision = model.revision();
    const auto same = model.update(menu());
    EXPECT_FALSE(same.layout);
    EXPECT_TRUE(same.properties.isEmpty());

    Menu next = menu();
    next[0].title = "cpu 2";
    next[3].submenu[0].checked = false;
    int pressed = 0;
    next[2].action = [&pressed] { ++pressed; };
    const auto change = model.update(next);
    EXPECT_FALSE(change.layout);
    EXPECT_EQ(ids(model), before);
    EXPECT_EQ(model.revision(), revision);
    ASSERT_EQ(change.properties.size(), 2);
    EXPECT_EQ(change.properties[0].properties, (QVariantMap { { "label", "cpu 2" }, { "enabled", false } }));
    EXPECT_EQ(change.properties[1].properties.value("toggle-state"), 0);
    const int show = model.layout(DBusMenuModel::root, 1, {}).children[2].id;
    model.action(show)();
    EXPECT_EQ(pressed, 1) << "the row has the new action";
}

TEST(DBusMenuModel, AMenuOfAnotherShapeGetsNewNumbers)
{
    const Menu shapes[] { {}, { { .title = "a" } }, { { .separator = true } },
        { { .title = "a", .submenu = { { .title = "b" } } } }, { { .title = "a" }, { .title = "b" } } };
    DBusMenuModel model;
    std::set<int> used;
    for (const Menu& first : { menu(), Menu {} })
        for (const Menu& shape : shapes) {
            model.update(first);
            const uint revision = model.revision();
            const auto change = model.update(shape);
            if (first.empty() && shape.empty()) {
                EXPECT_FALSE(change.layout);
                continue;
            }
            EXPECT_TRUE(change.layout);
            EXPECT_GT(model.revision(), revision);
            auto fresh = ids(model);
            fresh.erase(DBusMenuModel::root);
            for (const int id : fresh)
                EXPECT_TRUE(used.insert(id).second) << id;
        }
}

TEST(DBusMenuModel, OnlyARowWithAnActionCanBePressed)
{
    DBusMenuModel model;
    model.update(menu());
    const auto rows = model.layout(DBusMenuModel::root, 1, {}).children;
    const bool expected[] { false, false, true, false };
    for (int at = 0; at < rows.size(); ++at)
        EXPECT_EQ(static_cast<bool>(model.action(rows[at].id)), expected[at]) << at;
    EXPECT_FALSE(model.action(DBusMenuModel::root));
    EXPECT_FALSE(model.action(9999));
    EXPECT_FALSE(model.action(-1));
}

TEST(DBusMenuModel, WhatARowNoLongerHasGoesBackToItsDefault)
{
    using Texts = std::map<std::string, QVariant>;
    const std::pair<MenuItem, Texts> cases[] {
        { { .title = "a", .action = nothing }, { { "enabled", true } } },
        { { .title = "a" }, { { "enabled", false } } },
    };
    for (const auto& [item, expected] : cases) {
        DBusMenuModel model;
        MenuItem before = item;
        before.action = item.action ? platform::Job() : nothing;
        before.checked = true;
        before.toolTip = "tip";
        model.update({ before });
        const auto change = model.update({ item });
        ASSERT_EQ(change.properties.size(), 1);
        const QVariantMap& now = change.properties[0].properties;
        for (const auto& [name, value] : expected)
            EXPECT_EQ(now.value(QString::fromStdString(name)), value) << name;
        EXPECT_EQ(now.value("toggle-type", "checkmark"), "") << "a host would go on drawing a check box";
        EXPECT_EQ(now.value("accessible-desc", "tip"), "");
    }
}

} // namespace
