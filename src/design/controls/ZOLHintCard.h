// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LifeToken.h"
#include "design/Color.h"
#include "design/MotionServices.h"
#include "design/ThemedColor.h"
#include "design/ZOLMiniAppTokens.h"
#include "design/controls/HintCardButton.h"
#include "design/controls/ZOLHintCardPanel.h"
#include "design/voxel/ZOLVoxelModel.h"
#include "platform/Geometry.h"

#include <QFont>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace ostrel {

class ZOLShellLabel;
class ZOLVoxelView;

/// One colour of the light set, the same in both themes.
[[nodiscard]] constexpr ThemedColor alwaysLight(
    ThemedColor::Layer layer, std::string_view token, std::string_view fallback)
{
    const ZOLMiniAppTokens::Set& set = ZOLMiniAppTokens::N1;
    const auto& table = layer == ThemedColor::Layer::semantic ? set.semantic : set.component;
    const Color color = zolHex(table.find(token).value_or(fallback));
    return { layer, token, color, color };
}

/// The family's hint: a figure, a title, a fact and up to three actions. It stays light in both themes and
/// goes by itself after a while. It tells once that it was dismissed; taking it off the screen is up to
/// whoever made it. Its callbacks may destroy it and its panel. Main thread.
class ZOLHintCard final : public QWidget {
public:
    using Button = HintCardButton;
    using Panel = ZOLHintCardPanel;

    struct Action {
        QString label;
        std::function<void()> handler;
    };

    static constexpr int maxActions = 3;
    // Lengths in points.
    static constexpr int markSize = 40;
    static constexpr int defaultWidth = 320;
    static constexpr int inset = 16;
    static constexpr int gap = 12;

    static constexpr Color surface
        = alwaysLight(ThemedColor::Layer::component, "hint-background", "#ffffff").light;
    static constexpr ThemedColor themedBorder
        = alwaysLight(ThemedColor::Layer::component, "hint-border", "#e8e9ed");
    static constexpr Color border = themedBorder.light;
    static constexpr ThemedColor ink = alwaysLight(ThemedColor::Layer::component, "hint-text", "#202124");
    static constexpr ThemedColor muted
        = alwaysLight(ThemedColor::Layer::semantic, "text-secondary", "#6b6e75");

    [[nodiscard]] static double radius();
    /// In seconds; 0 under reduced motion.
    [[nodiscard]] static double appearDuration(bool reduceMotion);
    /// How far below its place it starts.
    [[nodiscard]] static double appearShift();

    /// The face of all its texts, by size in points and weight; the application may put another in its place.
    static QFont (*font)(double size, QFont::Weight weight);

    /// Actions beyond the third are dropped, which stderr is told. `onDismiss` is given the reason.
    /// `autoHide` in seconds, 0 for a card that stays; `width` of the whole card.
    ZOLHintCard(const QString& title, const QString& fact, std::vector<Action> actions,
        const ZOLVoxelModel& mark, const MotionServices& services,
        std::function<void(const QString& reason)> onDismiss = {}, double autoHide = 0,
        int width = defaultWidth);

    [[nodiscard]] ZOLVoxelView& markView() const { return *markView_; }
    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] const QString& fact() const { return fact_; }
    [[nodiscard]] const std::vector<Action>& actions() const { return actions_; }
    [[nodiscard]] const std::vector<Button*>& buttons() const { return buttons_; }
    [[nodiscard]] bool dismissed() const { return dismissReason_.has_value(); }
    [[nodiscard]] const std::optional<QString>& dismissReason() const { return dismissReason_; }

    /// Absent texts stay as they are. The card, and its panel with it, may change its height.
    void update(const std::optional<QString>& title, const std::optional<QString>& fact);
    using QWidget::update;

    /// A panel that holds the card, not on screen yet.
    [[nodiscard]] static std::unique_ptr<Panel> makePanel(std::unique_ptr<ZOLHintCard> card);

    /// Shows the panel with its lower left corner there, in global points with y upward, and lets the card
    /// appear. The keyboard stays where it is.
    void present(Panel& panel, const platform::Point& point);
    /// Starts the time that it stays, and lets its panel rise into place and become visible.
    void appear();

    /// From now on, in place of any time that runs.
    void startAutoHide();
    void cancelAutoHide();

    /// Once; later calls do nothing.
    void dismiss(const QString& reason);
    /// Runs the action of that place and dismisses; nothing for a place without an action.
    void actionPressed(int tag);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void build();
    void fitButtons();
    void relayout();
    void showTitle();

    MotionServices services_;
    QString title_;
    QString fact_;
    std::vector<Action> actions_;
    std::function<void(const QString&)> onDismiss_;
    double autoHide_;
    int cardWidth_;
    std::optional<QString> dismissReason_;
    unsigned hideGeneration_ = 0; ///< only the task that was planned in the present one still counts
    ZOLVoxelView* markView_;
    ZOLShellLabel* titleLabel_;
    ZOLShellLabel* factLabel_;
    std::vector<Button*> buttons_;
    LifeToken life_;
};

} // namespace ostrel
