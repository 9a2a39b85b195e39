// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <string_view>
#include <vector>

namespace ostrel {

class ZOLShellButton;
class ZOLShellLabel;
class ZOLThemeButton;

/// The last line of an application's panel: what the keys do, the theme, the catalogue and the status. Where
/// room is short the status gives way first, then the word for escape, and the keys never. Main thread.
class ZOLFooterLine final : public QWidget {
public:
    /// Where the catalogue of the family's applications is.
    static constexpr std::string_view catalogueHost = "apps.quent.example";
    static constexpr std::string_view appsTitle = "apps ↗";
    [[nodiscard]] static QString appsTooltip();

    struct Content {
        QString keys;
        QString esc = "esc close";
        QString status;
        std::vector<QWidget*> extras; ///< the footer takes them over
        ZOLThemeButton* theme = nullptr; ///< the footer takes it over
        std::function<void()> apps; ///< the button exists only with it
    };

    /// Width in points.
    ZOLFooterLine(const Content& content, int width, QWidget* parent = nullptr);

    [[nodiscard]] ZOLShellLabel* keysLabel() const { return keysLabel_; }
    [[nodiscard]] ZOLShellLabel* escLabel() const { return escLabel_; }
    [[nodiscard]] ZOLShellLabel* statusLabel() const { return statusLabel_; }
    [[nodiscard]] const std::vector<QWidget*>& extras() const { return extras_; }
    [[nodiscard]] ZOLShellButton* appsButton() const { return appsButton_; }
    [[nodiscard]] ZOLThemeButton* themeButton() const { return themeButton_; }

    void setKeys(const QString& text);
    void setStatus(const QString& text);

private:
    ZOLShellLabel* keysLabel_;
    ZOLShellLabel* escLabel_;
    ZOLShellLabel* statusLabel_;
    std::vector<QWidget*> extras_;
    ZOLShellButton* appsButton_ = nullptr;
    ZOLThemeButton* themeButton_;
};

} // namespace ostrel
