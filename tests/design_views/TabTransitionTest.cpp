// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/OstrelStyle.h"
#include "design/TabTransition.h"

#include <QVariantAnimation>

namespace {

using namespace ostrel;

constexpr Color oldColor { 1, 0, 0, 1 };
constexpr Color newColor { 0, 0, 1, 1 };

/// A view on screen whose content is of one colour and then of another.
struct Layer : QWidget {
    Layer()
    {
        resize(60, 40);
        setAppearance(*this, ZOLThemePolicy::Mode::light);
        fill(oldColor);
        show();
    }
    void fill(const Color& color)
    {
        delete content;
        content = new QWidget(this); // above all that is there
        content->setAutoFillBackground(true);
        content->setPalette(QPalette(qColor(color)));
        content->resize(size());
        content->show();
    }
    [[nodiscard]] QWidget* fade() const { return findChild<QWidget*>("shaperTabFade"); }
    /// The fade at rest, once it has both pictures.
    QVariantAnimation& begun() const
    {
        auto* const animation = fade()->findChild<QVariantAnimation*>();
        EXPECT_TRUE(spinUntil([&] { return animation->state() == QAbstractAnimation::Running; }));
        animation->pause();
        return *animation;
    }
    [[nodiscard]] QRgb at(int x) { return rendered(*this).pixel(x, 20); }

    QPointer<QWidget> content;
};

TEST(ShaperTabTransition, BlendsTheOldIntoTheNewAndSlidesUnlessMotionIsReduced)
{
    for (const auto& [forward, reduceMotion] : { std::pair(true, false), { false, false }, { true, true } }) {
        Layer layer;
        shaperTabTransition(layer, forward, reduceMotion);
        layer.fill(newColor);
        auto& animation = layer.begun();
        const int bare = forward ? 2 : 57; // where the ground shows meanwhile
        for (const auto& [time, seen] : { std::pair(0, oldColor), { 90, oldColor.blended(0.5, newColor) } }) {
            animation.setCurrentTime(time);
            for (const int x : { 2, 6, 53, 57 })
                EXPECT_TRUE(near(layer.at(x), x == bare && !reduceMotion ? OstrelStyle::bg.light : seen))
                    << x;
        }
        animation.resume();
        animation.setCurrentTime(180);
        EXPECT_TRUE(near(layer.at(2), newColor));
        EXPECT_TRUE(spinUntil([&] { return !layer.fade(); })) << "it takes itself away";
    }
}

TEST(ShaperTabTransition, GoesAtOnceWithWhatItLiesOverAndForTheNextOne)
{
    const std::function<void(Layer&)> ends[] { [](Layer& layer) { layer.hide(); },
        [](Layer& layer) { layer.resize(61, 40); },
        [](Layer& layer) { shaperTabTransition(layer, true, true); } };
    for (const auto& end : ends) {
        Layer layer;
        shaperTabTransition(layer, true, false);
        const QPointer<QWidget> fade = layer.fade();
        layer.fill(newColor);
        layer.begun();
        end(layer);
        EXPECT_TRUE(!fade || fade->isHidden());
        layer.hide();
        shaperTabTransition(layer, true, false);
        EXPECT_TRUE(spinUntil([&] { return !layer.fade(); })) << "nothing plays out of sight";
    }
}

} // namespace
