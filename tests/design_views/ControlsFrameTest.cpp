// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/ZOLAppMarkView.h"
#include "design/ZOLAppShellStyle.h"
#include "design/controls/ZOLAppHeader.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLPinButton.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/controls/ZOLTabStrip.h"
#include "design/controls/ZOLThemeButton.h"

#include <QLayout>

namespace {

using namespace ostrel;
using enum ZOLThemePolicy::Mode;

constexpr int width = 728;

/// Where a view stands in the frame around it.
QRect placed(const QWidget* view, QWidget& frame)
{
    frame.show();
    // A row within a row takes a turn of its own.
    for (int turn = 0; turn < 2; ++turn)
        QCoreApplication::processEvents();
    return { view->mapTo(&frame, QPoint()), view->size() };
}

void expectGroup(QWidget& view, const char* name, QSize size)
{
    const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(told->role(), QAccessible::Grouping);
    EXPECT_EQ(told->text(QAccessible::Name), name);
    EXPECT_EQ(view.size(), size);
}

void expectNamed(const QWidget& view, const char* identifier, const char* name, const char* toolTip)
{
    EXPECT_EQ(view.objectName(), identifier);
    EXPECT_EQ(view.accessibleName(), name);
    EXPECT_EQ(view.toolTip(), toolTip);
}

std::vector<ZOLTabStrip::Tab> threeTabs()
{
    return { { "a", "alpha", "the first" }, { "b", "beta", std::nullopt }, { "c", "gamma", "the third" } };
}

TEST(ZOLAppHeader, StandsInOneRowWithItsControlsAtTheRight)
{
    int settings = 0;
    int closed = 0;
    auto* pin = new ZOLPinButton(true, {});
    ZOLAppHeader header(
        { ZOLAppMark::ostrel, "OSTREL", "local", "1.0 · 2", [&] { ++settings; }, pin, [&] { ++closed; } },
        width);
    expectGroup(header, "OSTREL header", { width, 40 });
    EXPECT_EQ(placed(header.markView(), header), QRect(0, 0, 40, 40));
    EXPECT_EQ(placed(header.nameLabel(), header).left(), 48);
    EXPECT_EQ(placed(header.statusLabel(), header).top(), placed(header.nameLabel(), header).bottom() + 3);
    EXPECT_EQ(placed(header.closeButton(), header), QRect(700, 6, 28, 28));
    EXPECT_EQ(placed(pin, header), QRect(664, 6, 28, 28));
    EXPECT_EQ(placed(header.settingsButton(), header), QRect(584, 6, 72, 28));
    EXPECT_EQ(placed(header.versionLabel(), header).right(), 575);
    expectNamed(*header.settingsButton(), "settings", "settings",
        "settings: switches, keys and the menu bar mode of this app");
    expectNamed(*header.closeButton(), "close-panel", "close panel", "close · esc");
    header.settingsButton()->click();
    header.closeButton()->click();
    EXPECT_EQ(std::pair(settings, closed), std::pair(1, 1));
    EXPECT_EQ(header.settingsButton()->nextInFocusChain(), pin);
    EXPECT_EQ(pin->nextInFocusChain(), header.closeButton());
}

TEST(ZOLAppHeader, ItsVersionGivesWayBeforeItsWords)
{
    const QString status(40, 'm');
    ZOLAppHeader header({ .name = "zol", .status = status, .version = "1.2.3 · 45" }, 340);
    EXPECT_EQ(placed(header.statusLabel(), header).width(), header.statusLabel()->sizeHint().width());
    EXPECT_TRUE(header.versionLabel()->isCut());
    EXPECT_EQ(placed(header.versionLabel(), header).right(), 339);
    header.setVersion("1");
    placed(header.versionLabel(), header);
    EXPECT_FALSE(header.versionLabel()->isCut());
    header.setStatus(status + status);
    EXPECT_EQ(placed(header.versionLabel(), header).width(), 0);
    EXPECT_TRUE(header.statusLabel()->isCut());
    EXPECT_LE(placed(header.statusLabel(), header).right(), 339);
}

TEST(ZOLAppHeader, ItsMarkStaysOnALightPlateAndCanBeReplacedInItsPlace)
{
    ZOLAppHeader header({ .mark = ZOLAppMark::ostrel, .name = "zol", .onClose = [] {} }, 200);
    EXPECT_FALSE(header.settingsButton() || header.pinButton() || header.statusLabel());
    setAppearance(header, dark);
    placed(header.markView(), header);
    EXPECT_TRUE(near(rendered(header).pixel(20, 2), ZOLAppShellStyle::plate));
    EXPECT_TRUE(near(rendered(header).pixel(44, 2), ZOLAppShellStyle::canvas.dark));
    const QPointer<QWidget> old = header.markView();
    auto* figure = new QWidget;
    figure->setFocusPolicy(Qt::TabFocus);
    header.replaceMark(figure);
    EXPECT_EQ(placed(figure, header), QRect(0, 0, 40, 40));
    EXPECT_FALSE(header.markView());
    EXPECT_TRUE(near(rendered(header).pixel(20, 20), ZOLAppShellStyle::plate));
    QCoreApplication::sendPostedEvents(old, QEvent::DeferredDelete);
    EXPECT_FALSE(old);
    const QWidget* next = &header;
    while (next->focusPolicy() == Qt::NoFocus)
        next = next->nextInFocusChain();
    EXPECT_EQ(next, figure) << "the keyboard reaches it before the buttons";
    EXPECT_EQ(header.findChildren<QWidget*>(Qt::FindDirectChildrenOnly).front(), figure)
        << "it is read first";
}

TEST(ZOLTabStrip, StandsInARowAndTellsItsKeys)
{
    ZOLTabStrip strip(threeTabs(), std::nullopt, width, 80, {});
    expectGroup(strip, "views", { width, 30 });
    EXPECT_EQ(placed(strip.buttons().at("a"), strip), QRect(0, 0, 80, 30));
    EXPECT_EQ(placed(strip.buttons().at("c"), strip), QRect(166, 0, 80, 30));
    EXPECT_EQ(strip.buttons().at("b")->kind(), ZOLShellButton::Kind::navigation);
    expectNamed(*strip.buttons().at("b"), "b", "beta view · key 2", "");
    expectNamed(*strip.buttons().at("c"), "c", "gamma view · key 3", "the third · key 3");
    EXPECT_EQ(strip.keyMap(), "1 alpha · 2 beta · 3 gamma");
    for (const auto& [key, id] : { std::pair { 1, "a" }, { 3, "c" }, { 0, "" }, { 4, "" }, { -1, "" } })
        EXPECT_EQ(strip.id(key).value_or(""), id) << key;
    const ZOLTabStrip none({}, std::nullopt, width, 80, {});
    EXPECT_EQ(none.selected(), "");
    EXPECT_EQ(none.keyMap(), "");
}

TEST(ZOLTabStrip, APressSelectsAndTellsWhileSelectOnlyShows)
{
    std::vector<std::string> told;
    auto strip = std::make_unique<ZOLTabStrip>(
        threeTabs(), "b", width, 80, [&](const std::string& id) { told.push_back(id); });
    const auto active = [&] {
        std::string ids;
        for (const auto& [id, button] : strip->buttons())
            ids += button->isActive() ? id : "";
        return ids;
    };
    EXPECT_EQ(active(), "b");
    strip->select("c");
    EXPECT_EQ(active(), "c");
    strip->select("unknown");
    EXPECT_EQ(std::pair(active(), strip->selected()), std::pair(std::string("c"), std::string("c")));
    strip->selectNone();
    EXPECT_EQ(active() + strip->selected(), "");
    EXPECT_TRUE(told.empty());
    strip->buttons().at("a")->click();
    EXPECT_EQ(active(), "a");
    strip->setOnSelect([&](const std::string& id) {
        strip.reset();
        told.push_back(id);
    });
    strip->buttons().at("b")->click();
    EXPECT_EQ(told, (std::vector<std::string> { "a", "b" }));
}

TEST(ZOLFooterLine, StandsInOrderAndItsStatusGivesWayFirst)
{
    int opened = 0;
    auto* extra = new QWidget;
    extra->setFixedSize(20, 10);
    auto* theme = new ZOLThemeButton(light, {});
    ZOLFooterLine footer({ .keys = "1 a · 2 b",
                             .status = QString(70, 's'),
                             .extras = { extra },
                             .theme = theme,
                             .apps = [&] { ++opened; } },
        width);
    expectGroup(footer, "hints", { width, 22 });
    QWidget* const order[] { footer.keysLabel(), footer.escLabel(), extra, theme, footer.appsButton(),
        footer.statusLabel() };
    for (std::size_t at = 1; at < std::size(order); ++at) {
        const int gap = placed(order[at], footer).left() - placed(order[at - 1], footer).right() - 1;
        EXPECT_EQ(gap, order[at] == extra ? 32 : 16)
            << at << ": the spacer is between the hints and the rest";
    }
    EXPECT_EQ(placed(extra, footer).top(), 6);
    EXPECT_TRUE(footer.statusLabel()->isCut());
    EXPECT_FALSE(footer.escLabel()->isCut());
    EXPECT_EQ(placed(footer.statusLabel(), footer).right(), width - 1);
    EXPECT_EQ(footer.escLabel()->objectName() + footer.escLabel()->text(), "hint-escesc close");
    EXPECT_EQ(footer.appsButton()->size(), QSize(68, 22));
    expectNamed(*footer.appsButton(), "apps-open", "apps ↗",
        "apps.quent.example: the catalog of the ZOL apps opens in the browser");
    footer.appsButton()->click();
    EXPECT_EQ(opened, 1);

    footer.setStatus("ok");
    EXPECT_EQ(placed(footer.statusLabel(), footer).width(), footer.statusLabel()->sizeHint().width());
    EXPECT_FALSE(footer.statusLabel()->isCut());
    footer.setKeys(QString(75, 'k'));
    EXPECT_EQ(placed(footer.statusLabel(), footer).width(), 0);
    EXPECT_TRUE(footer.escLabel()->isCut());
    EXPECT_EQ(footer.keysLabel()->width(), footer.keysLabel()->sizeHint().width());
    EXPECT_FALSE(ZOLFooterLine({ .keys = "k" }, 100).appsButton());
}

} // namespace
