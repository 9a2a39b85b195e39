// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtPopover.h"

#include "platform/qt/GlobalPoints.h"
#include "platform/qt/PopoverPlacement.h"
#include "platform/qt/PopoverShadow.h"
#include "platform/qt/QtScreens.h"
#include "platform/qt/WindowShape.h"

#include "support/QtEnvironment.h"

#include <QPointer>
#include <QWidget>

namespace {

using namespace platform;

TEST(PopoverFrame, TouchesItsAnchorWhereThereIsRoomAndStaysInTheFreeArea)
{
    const Rect visible { 100, 50, 1000, 800 }; // up to 1100 and 850
    struct Case {
        const char* what;
        Rect anchor;
        QSizeF size;
        Edge edge;
        Rect frame;
    };
    for (const auto& [what, anchor, size, edge, frame] :
        {
            Case { "below", { 500, 800, 20, 30 }, { 400, 300 }, Edge::bottom, { 310, 500, 400, 300 } },
            { "above", { 500, 100, 20, 30 }, { 400, 300 }, Edge::top, { 310, 130, 400, 300 } },
            { "left", { 700, 400, 20, 30 }, { 400, 300 }, Edge::left, { 300, 265, 400, 300 } },
            { "right", { 200, 400, 20, 30 }, { 400, 300 }, Edge::right, { 220, 265, 400, 300 } },
            { "no room below", { 500, 340, 20, 30 }, { 400, 300 }, Edge::bottom, { 310, 370, 400, 300 } },
            { "just room below", { 500, 350, 20, 30 }, { 400, 300 }, Edge::bottom, { 310, 50, 400, 300 } },
            { "no room above", { 500, 600, 20, 30 }, { 400, 300 }, Edge::top, { 310, 300, 400, 300 } },
            { "no room right", { 900, 400, 20, 30 }, { 400, 300 }, Edge::right, { 500, 265, 400, 300 } },
            { "in a bar above", { 500, 853, 20, 22 }, { 400, 800 }, Edge::bottom, { 310, 50, 400, 800 } },
            { "in a bar below", { 500, 10, 20, 30 }, { 400, 300 }, Edge::bottom, { 310, 50, 400, 300 } },
            { "beyond the right", { 1090, 800, 20, 30 }, { 400, 300 }, Edge::bottom, { 700, 500, 400, 300 } },
            { "beyond the left", { 100, 800, 20, 30 }, { 400, 300 }, Edge::bottom, { 100, 500, 400, 300 } },
            { "wider than all", { 500, 800, 20, 30 }, { 1200, 300 }, Edge::bottom, { 100, 500, 1200, 300 } },
            { "higher than all", { 500, 860, 20, 20 }, { 400, 900 }, Edge::bottom, { 310, 50, 400, 800 } },
            { "no room at either", { 500, 400, 20, 30 }, { 400, 700 }, Edge::bottom, { 310, 50, 400, 700 } },
        })
        EXPECT_EQ(popoverFrame(anchor, size, edge, visible), frame)
            << what << " " << popoverFrame(anchor, size, edge, visible).y;
    const Rect low { 0, 0, 1000, 300 };
    EXPECT_EQ(
        popoverFrame({ 500, 300, 20, 20 }, { 400, 900 }, Edge::bottom, low), (Rect { 310, -100, 400, 400 }));
    EXPECT_EQ(
        popoverFrame({ 500, 300, 20, 20 }, { 400, 350 }, Edge::bottom, low), (Rect { 310, -50, 400, 350 }));
}

TEST(DisplayOf, IsTheOneUnderTheAnchorsMiddleOrTheNearest)
{
    const std::vector<Screen> displays { { "a", { 0, 0, 1000, 800 }, {} },
        { "b", { 1000, 0, 1000, 800 }, {} } };
    for (const auto& [x, index] : { std::pair { 980.0, 0U }, { 995.0, 1U }, { -500.0, 0U }, { 2500.0, 1U } })
        EXPECT_EQ(displayOf({ x, 900, 20, 20 }, displays), index) << x;
    EXPECT_EQ(displayOf({ 0, 0, 20, 20 }, {}), std::nullopt);
}

TEST(PopoverShadow, FadesFromTheOutlineToNothingAtTheMarginsEnd)
{
    const PopoverShadow shadow { .radius = 12 };
    for (const double ratio : { 1.0, 1.25, 2.0 }) {
        const QImage image = shadow.image(ratio);
        const auto dark = [&](double x, double y) {
            return qAlpha(image.pixel(static_cast<int>(x * ratio), static_cast<int>(y * ratio)));
        };
        const double end = (image.width() - 1) / ratio, middle = end / 2, edge = end - shadow.margin;
        for (const auto& [x, y] : { std::pair { middle, end - 0.5 }, { end - 0.5, middle }, { 0.0, middle },
                 { middle, 0.0 }, { 0.0, 0.0 }, { end - 1, end - 1 } })
            EXPECT_LE(dark(x, y), 1) << ratio << " " << x << " " << y;
        EXPECT_GT(dark(middle, edge + 1), dark(middle, shadow.margin - 1)) << "it stands lower";
        EXPECT_GT(dark(middle, edge + 1), 60);
        for (double out = 1; out < shadow.margin - 2; ++out)
            EXPECT_GE(dark(middle, edge + out), dark(middle, edge + out + 1)) << out;
    }
}

TEST(RoundedStripes, LeaveTheCornersOutAndNothingElse)
{
    for (const auto& [width, height, radius] : { std::tuple { 40, 30, 8 }, { 40, 30, 0 }, { 10, 10, 50 } }) {
        const auto stripes = roundedStripes(width, height, radius);
        int row = 0, area = 0;
        for (const xcb_rectangle_t& stripe : stripes) {
            EXPECT_EQ(stripe.y, row) << "without a gap";
            EXPECT_EQ(stripe.x * 2 + stripe.width, width) << "in the middle";
            row += stripe.height;
            area += stripe.width * stripe.height;
        }
        EXPECT_EQ(row, height);
        const double round = std::min({ radius, width / 2, height / 2 });
        EXPECT_NEAR(area, width * height - (4 - 3.14159) * round * round, round);
    }
}

struct Anchor final : AnchorView {
    [[nodiscard]] Rect bounds() const override { return { 0, 0, 20, 20 }; }
    [[nodiscard]] Rect onScreen(const Rect& rect) const override
    {
        return { place.x + rect.x, place.y + rect.y, rect.width, rect.height };
    }
    Rect place;
};

class QtPopoverOffscreen : public testing::Test {
protected:
    static QPointer<QWidget> makeView(QSize size)
    {
        auto* const view = new QWidget;
        view->setFocusPolicy(Qt::StrongFocus);
        view->resize(size);
        return view;
    }

    /// Where the view is on the screen, in global points.
    static Rect placeOf(const QWidget& view)
    {
        return toGlobal(QRectF(view.mapToGlobal(QPoint()), view.size()), globalOrigin());
    }

    void show() { popover->show(anchor.bounds(), anchor, Edge::bottom); }

    X11Struts struts;
    QtScreens screens { struts };
    Rect free = screens.all().at(0).visible;
    Anchor anchor;
    std::unique_ptr<Popover> popover = QtPopovers(screens).makePopover(12);
    int closes = 0;
};

TEST_F(QtPopoverOffscreen, HangsFromItsAnchorAtItsOwnSizeAndLowerOnlyWhereTheDisplayIs)
{
    const auto view = makeView({ 300, static_cast<int>(free.height) + 100 });
    popover->setContentView(view);
    anchor.place = { free.x + 200, free.y + free.height, 20, 20 };
    show();
    EXPECT_EQ(placeOf(*view), (Rect { free.x + 60, free.y, 300, free.height }));
    popover->close();

    const auto small = makeView({ 300, 200 });
    popover->setContentView(small);
    show();
    EXPECT_EQ(placeOf(*small), (Rect { free.x + 60, free.y + free.height - 200, 300, 200 }));
}

TEST_F(QtPopoverOffscreen, AnOpenOneGoesOnWithANewViewAtThePlaceOfTheOldOneThatHadTheKeyboard)
{
    const auto before = makeView({ 300, 200 }), after = makeView({ 100, 100 });
    popover->setContentView(before);
    anchor.place = { free.x + 200, free.y + free.height, 20, 20 };
    show();
    before->setFocus();
    const Rect place = placeOf(*before);
    popover->setContentView(after);
    ASSERT_TRUE(before) << "a later turn of the loop drops it";
    EXPECT_FALSE(before->isVisible());
    EXPECT_TRUE(after->isVisible());
    EXPECT_EQ(placeOf(*after), place);
    EXPECT_EQ(after->window()->focusWidget(), after);
    EXPECT_TRUE(spinUntil([&] { return !before; }));
    EXPECT_TRUE(popover->isShown());
}

TEST_F(QtPopoverOffscreen, EachCloseIsToldOnceWhoeverAsked)
{
    const auto view = makeView({ 300, 200 });
    popover->setContentView(view);
    popover->setOnDidClose([this] {
        EXPECT_FALSE(popover->isShown());
        popover->close();
        ++closes;
    });
    popover->close();
    EXPECT_EQ(closes, 0) << "it wasn't open";
    int expected = 0;
    for (const auto& close : std::vector<std::function<void()>> { [this] { popover->performClose(); },
             [this] { popover->close(); }, [&] { view->window()->close(); } }) {
        show();
        EXPECT_TRUE(popover->isShown());
        close();
        EXPECT_FALSE(view->isVisible());
        EXPECT_EQ(closes, ++expected);
    }
    show();
    popover->setOnDidClose([this] { popover.reset(); });
    popover->performClose();
    EXPECT_FALSE(view);
}

TEST(GlobalPoints, GrowUpwardFromThePrimaryDisplaysLowerLeft)
{
    const QPointF origin(1920, 1080);
    EXPECT_EQ(toGlobal(QRectF(2020, 30, 20, 10), origin), (Rect { 100, 1040, 20, 10 }));
    EXPECT_EQ(toToolkit({ 100, 1040, 20, 10 }, origin), QRectF(2020, 30, 20, 10));
}

} // namespace
