// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/ZOLAppShellStyle.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLPinButton.h"
#include "design/controls/ZOLRowCell.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/controls/ZOLThemeButton.h"

#include <QEnterEvent>

namespace {

using namespace ostrel;
using enum ZOLThemePolicy::Mode;
namespace Shell = ZOLAppShellStyle;

TEST(PaintedButton, IsLowerCaseAndKnownByItsCaptionUnlessItsOwnerNamedIt)
{
    OstrelButton button("ÜBER Retry", 160, {});
    const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&button);
    EXPECT_EQ(told->text(QAccessible::Name), "über retry");
    EXPECT_EQ(told->role(), QAccessible::Button);
    EXPECT_FALSE(told->state().selected);
    button.setActive(true);
    EXPECT_TRUE(told->state().selected);
    button.setCaption("Again");
    EXPECT_EQ(told->text(QAccessible::Name), "again");
    button.setAccessibleName("try once more");
    button.setCaption("Third");
    EXPECT_EQ(told->text(QAccessible::Name), "try once more");
    button.setLabel("Fourth");
    EXPECT_EQ(told->text(QAccessible::Name), "fourth");
}

TEST(PaintedButton, IsPressedByMouseAndKeysAndLeavesOtherKeysAlone)
{
    int presses = 0;
    OstrelButton button("go", 60, [&] { ++presses; });
    for (const int key : { Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter })
        EXPECT_TRUE(sendKey(button, key));
    click(button);
    EXPECT_EQ(presses, 4);
    EXPECT_TRUE(sendKey(button, Qt::Key_Space, {}, true)) << "held down";
    for (const int key : { Qt::Key_1, Qt::Key_Down, Qt::Key_Escape, Qt::Key_Slash })
        EXPECT_FALSE(sendKey(button, key)) << key;
    EXPECT_FALSE(sendKey(button, Qt::Key_Return, Qt::ControlModifier));
    click(button, Qt::RightButton);
    EXPECT_EQ(button.focusPolicy(), Qt::TabFocus);
    EXPECT_EQ(button.cursor().shape(), Qt::PointingHandCursor);
    button.setEnabled(false);
    EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
    click(button);
    EXPECT_EQ(presses, 4);
}

TEST(PaintedButton, MayBeDeletedByItsOwnHandler)
{
    for (const bool byKey : { true, false }) {
        QPointer<PaintedButton> button;
        int gone = 0;
        const auto end = [&, kept = std::string("still readable")] {
            delete button;
            gone += kept == "still readable" ? 1 : 0;
        };
        for (PaintedButton* each : { static_cast<PaintedButton*>(new OstrelButton("go", 60, end)),
                 static_cast<PaintedButton*>(new ZOLPinButton(false, [end](bool) { end(); })),
                 static_cast<PaintedButton*>(new ZOLThemeButton(light, [end](auto) { end(); })) }) {
            button = each;
            if (byKey)
                sendKey(*each, Qt::Key_Return);
            else
                click(*each);
            EXPECT_FALSE(button);
        }
        EXPECT_EQ(gone, 3);
    }
}

TEST(PaintedButton, FollowsThePointerUntilItIsOutOfSight)
{
    QWidget ground;
    auto* button = new OstrelButton("go", 60, {}, 28, &ground);
    ground.show();
    QEnterEvent enter({ 3, 3 }, { 3, 3 }, { 3, 3 });
    QCoreApplication::sendEvent(button, &enter);
    EXPECT_TRUE(button->state().hovering);
    button->hide();
    EXPECT_FALSE(button->state().hovering);
}

TEST(PaintedButton, ItsOutlineIsOneCrispLineAtEveryScaleAndPlace)
{
    for (const double ratio : { 1.0, 1.25, 1.5, 2.0 }) {
        for (const int offset : { 0, 1, 2, 3 }) {
            SCOPED_TRACE(testing::Message() << "scale " << ratio << ", offset " << offset);
            QWidget ground;
            ground.resize(80, 40);
            setAppearance(ground, light);
            auto* button = new OstrelButton("", 61, {}, 28, &ground);
            button->move(offset, offset);
            const QImage seen = rendered(ground, ratio);
            const int middle = static_cast<int>((offset + 14) * ratio);
            const int left = static_cast<int>(std::round(offset * ratio));
            const int right = static_cast<int>(std::round((offset + 61) * ratio)) - 1;
            const int line = static_cast<int>(ratio);
            for (int x = 0; x < seen.width(); ++x) {
                const bool inked = (x >= left && x < left + line) || (x <= right && x > right - line);
                EXPECT_TRUE(near(seen.pixel(x, middle), inked ? Shell::divider.light : Shell::canvas.light))
                    << x;
            }
        }
    }
}

TEST(PaintedButton, TheBarOfTheActiveOneIsTwoHighAndTenInAndTurnsWithTheTheme)
{
    QWidget ground;
    ground.resize(100, 40);
    auto* button = new ZOLShellButton("", 80, {}, 30, &ground);
    button->setKind(ZOLShellButton::Kind::navigation);
    button->setActive(true);
    for (const double ratio : { 1.0, 2.0 }) {
        for (const auto mode : { light, dark, light }) {
            setAppearance(ground, mode);
            const QImage seen = rendered(ground, ratio);
            for (const auto& [x, y, color] : { std::tuple { 40.0, 28.0, Shell::signal },
                     { 40.0, 29.5, Shell::signal }, { 40.0, 27.0, Shell::hover },
                     { 11.5, 28.5, Shell::signal }, { 68.0, 28.5, Shell::signal },
                     { 9.0, 28.0, Shell::hover }, { 70.5, 28.0, Shell::hover } })
                EXPECT_TRUE(near(seen.pixel(int(x * ratio), int(y * ratio)), color.in(mode)))
                    << x << " " << y;
        }
    }
}

TEST(PaintedButton, ItsCaptionKeepsItsLineAndItsMargins)
{
    QWidget ground;
    ground.resize(200, 28);
    setAppearance(ground, light);
    auto* button = new ZOLShellButton("", 60, {}, 28, &ground);
    button->setKind(ZOLShellButton::Kind::navigation);
    // The part with a caption between these columns.
    const auto inked = [&](int from, int to) {
        return around(rendered(ground), QRect(from, 0, to - from, 28),
            [](QRgb pixel) { return pixel != qColor(Shell::canvas.light).rgba(); });
    };
    button->setCaption("xx");
    const QRect alone = inked(0, 200);
    // A borrowed glyph beside it doesn't move the letter.
    button->setCaption("◉⌘x");
    const QRect mixed = inked(34, 40);
    EXPECT_EQ(std::pair(mixed.top(), mixed.bottom()), std::pair(alone.top(), alone.bottom()));
    button->setCaption("a caption that is much too long for it");
    EXPECT_TRUE(inked(0, 4).isNull());
    EXPECT_TRUE(inked(56, 200).isNull());
    EXPECT_FALSE(inked(46, 56).isNull()) << "it uses the room up to the margin";
}

TEST(ShellSwitches, FlipAndTellTheNewValueButAreSilentWhenTheyAreSet)
{
    std::string told;
    ZOLPinButton pin(false, [&](bool value) { told += value ? "pinned " : "free "; });
    ZOLThemeButton theme(dark, [&](auto mode) { told += mode == dark ? "dark " : "light "; });
    const auto expect = [](const PaintedButton& button, QSize size, const char* caption, const char* name) {
        EXPECT_EQ(button.size(), size);
        EXPECT_EQ(button.caption(), caption);
        EXPECT_EQ(button.accessibleName(), name);
    };
    expect(pin, { 28, 28 }, "○", "pin panel open");
    expect(theme, { 28, 22 }, "■", "black theme, switch to white");
    pin.click();
    theme.click();
    expect(pin, { 28, 28 }, "◉", "unpin panel");
    expect(theme, { 28, 22 }, "□", "white theme, switch to black");
    EXPECT_TRUE(pin.isActive());
    pin.setPinned(false);
    theme.setMode(dark);
    EXPECT_EQ(told, "pinned light ");
    EXPECT_FALSE(pin.isActive());
    EXPECT_EQ(pin.objectName() + pin.toolTip(), "pin-panelpin: the panel stays open on a click outside");
    EXPECT_EQ(theme.objectName(), "theme-toggle");
}

TEST(ZOLRowCell, IsAButtonOnlyWithAHandler)
{
    QPointer<ZOLRowCell> button;
    button = new ZOLRowCell(ZOLAppMark::ostrel, { "title", "", "reason" }, 300, [&] { delete button; });
    ZOLRowCell row(QString("a"), { "title", "subtitle", "reason" }, 300, {});
    EXPECT_EQ(QAccessible::queryAccessibleInterface(button)->role(), QAccessible::Button);
    EXPECT_EQ(button->accessibleName(), "title · reason");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&row)->role(), QAccessible::Row);
    EXPECT_FALSE(sendKey(row, Qt::Key_Return));
    row.setSelected(true);
    EXPECT_TRUE(near(rendered(row).pixel(1, 18), Shell::signal.light));
    press(*button);
    EXPECT_FALSE(button) << "pressing down is enough";
}

TEST(ShellFont, IsWhatTheShellIsWrittenInWithoutTheFloorOfThePanelsOwnText)
{
    const std::unique_ptr<ZOLShellLabel> small(Shell::label("x", 8, QFont::Normal, Shell::ink));
    EXPECT_EQ(small->font().pixelSize(), 8);
    const auto before = std::exchange(Shell::font, [](double, QFont::Weight) { return QFont("other"); });
    const std::unique_ptr<ZOLShellLabel> label(Shell::label("x", 8, QFont::Normal, Shell::ink));
    Shell::font = before;
    EXPECT_EQ(label->font().family(), "other");
}

} // namespace
