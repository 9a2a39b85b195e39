// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class ZOLShellButton;

/// A row of tabs, at most one of them selected. Main thread.
class ZOLTabStrip final : public QWidget {
public:
    struct Tab {
        std::string id;
        QString title;
        std::optional<QString> hint;
    };
    using OnSelect = std::function<void(const std::string&)>;

    /// Widths in points. `selected` is the first tab where it isn't given. `onSelect` gets the id of a tab
    /// that was pressed; it may delete the strip.
    ZOLTabStrip(std::vector<Tab> tabs, const std::optional<std::string>& selected, int width, int tabWidth,
        OnSelect onSelect, QWidget* parent = nullptr);

    [[nodiscard]] const std::vector<Tab>& tabs() const { return tabs_; }
    [[nodiscard]] const std::string& selected() const { return selected_; }
    /// By tab id.
    [[nodiscard]] const std::map<std::string, ZOLShellButton*>& buttons() const { return buttons_; }

    /// Shows a tab as selected without a call of `onSelect`. An unknown id changes nothing.
    void select(const std::string& id);
    /// Shows none as selected: the panel shows something that has no tab.
    void selectNone();
    void setOnSelect(OnSelect onSelect);

    /// The id of a tab by its place, counted from 1; absent outside.
    [[nodiscard]] std::optional<std::string> id(int forKey) const;
    /// "1 dashboard · 2 system".
    [[nodiscard]] QString keyMap() const;

private:
    [[nodiscard]] ZOLShellButton* makeButton(const Tab& tab, int key, int width);
    void showSelected();

    std::vector<Tab> tabs_;
    std::string selected_;
    OnSelect onSelect_;
    std::map<std::string, ZOLShellButton*> buttons_;
};

} // namespace ostrel
