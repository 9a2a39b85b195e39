// SPDX-License-Identifier: Apache-2.0
#include "Samples.h"
#include "Sheet.h"
#include "StillServices.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLAppHeader.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLHintCard.h"
#include "design/controls/ZOLPinButton.h"
#include "design/controls/ZOLRowCell.h"
#include "design/controls/ZOLShellButton.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/controls/ZOLTabStrip.h"
#include "design/controls/ZOLThemeButton.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"

#include <QCoreApplication>
#include <QEnterEvent>

#include <array>
#include <functional>

namespace ostrel {

namespace {

constexpr int frameWidth = 728;

void nothing() { }

/// A state that a pressable view can be in, and the input that brings it there.
struct State {
    const char* name;
    std::function<void(QWidget&)> reach;
};

void enter(QWidget& view)
{
    QEnterEvent event(QPointF(3, 3), QPointF(3, 3), QPointF(3, 3));
    QCoreApplication::sendEvent(&view, &event);
}

const std::array states {
    State { "rest", [](QWidget&) {} },
    State { "hover", enter },
    State { "pressed",
        [](QWidget& view) {
            enter(view);
            dynamic_cast<QAbstractButton&>(view).setDown(true);
        } },
    State { "active", [](QWidget& view) { dynamic_cast<PaintedButton&>(view).setActive(true); } },
    State { "disabled", [](QWidget& view) { view.setEnabled(false); } },
    State { "keyboard", [](QWidget& view) { view.setFocus(); } },
};

void drawStates(Sheet& sheet, const QString& kind, const std::function<PaintedButton*()>& make)
{
    for (const State& state : states)
        sheet.view(kind + ", " + state.name, make(), state.reach);
    sheet.row();
}

QWidget* filledBox()
{
    auto* box = new PanelBox(frameWidth);
    box->add(section("cleanup · audit first · owned data only", box->contentWidth()));
    box->add(new KeyValueRow("load (1m)", "2.40 · 30% of 8 cores", box->contentWidth()));
    box->add(
        new KeyValueRow("a label", QString("a value that doesn't fit ").repeated(6), box->contentWidth()));
    box->add(separator(box->contentWidth()));
    box->add(wrappingLabel(
        "Collector history could not be saved or read. Refresh to retry; current readings remain separate. "
        "This text breaks between words and is as high as it needs.",
        11, QFont::Normal, OstrelStyle::muted, box->contentWidth()));
    return box;
}

} // namespace

void drawButtons(Sheet& sheet)
{
    sheet.section("buttons");
    for (const auto& [name, kind] : { std::pair { "framed", ZOLShellButton::Kind::framed },
             std::pair { "navigation", ZOLShellButton::Kind::navigation },
             std::pair { "quiet", ZOLShellButton::Kind::quiet } })
        drawStates(sheet, name, [kind = kind] {
            auto* button = new ZOLShellButton("settings", 90, nothing);
            button->setKind(kind);
            return button;
        });
    drawStates(sheet, "ostrel", [] { return new OstrelButton("Inspect", 90, nothing); });
    drawStates(sheet, "ostrel tab", [] {
        auto* button = new OstrelButton("memory", 90, nothing);
        button->setNavigation(true);
        return button;
    });
    drawStates(sheet, "hint", [] { return new HintCardButton("inspect", 0); });
    sheet.view("action button", actionButton("open workloads", 160, nothing));
    sheet.view("too long", new OstrelButton("a caption that is too long", 90, nothing));
    for (const bool pinned : { false, true })
        sheet.view(pinned ? "pinned" : "unpinned", new ZOLPinButton(pinned, {}));
    for (const ZOLThemePolicy::Mode mode : ZOLThemePolicy::modes)
        sheet.view(utf16(ZOLThemePolicy::rawValue(mode)), new ZOLThemeButton(mode, {}));
}

void drawFrame(Sheet& sheet)
{
    StillServices still;
    sheet.section("the frame");
    auto* header = new ZOLAppHeader({ .mark = ZOLAppMark::ostrel,
                                        .name = "OSTREL",
                                        .status = "local + server · a little more room to think",
                                        .version = "0.9.0 · 28",
                                        .onSettings = nothing,
                                        .pin = new ZOLPinButton(false, {}),
                                        .onClose = nothing },
        frameWidth);
    auto* character = new ZOLVoxelView(ZOLVoxelModels::ostrel(), still.services);
    character->setFixedSize(40, 40);
    character->setPadding(0);
    character->setShowsShadow(false);
    header->replaceMark(character);
    sheet.view("header", header);
    sheet.view(
        "plain header", new ZOLAppHeader({ .mark = ZOLAppMark::pellam, .name = "pellam" }, frameWidth));
    std::vector<ZOLTabStrip::Tab> tabs;
    for (const char* title :
        { "dashboard", "system", "processes", "agents", "insights", "cleanup", "automations", "server" })
        tabs.push_back({ title, title, "a hint" });
    sheet.view("tab strip", new ZOLTabStrip(tabs, "agents", frameWidth, 80, {}));
    const auto footer = [&](const QString& keys) {
        return new ZOLFooterLine({ .keys = keys,
                                     .status = "0.9.0 · on this Mac · refreshes while open",
                                     .theme = new ZOLThemeButton(sheet.theme(), {}),
                                     .apps = nothing },
            frameWidth);
    };
    sheet.view("footer", footer("1–8 tabs · 9 settings"));
    sheet.view("footer, short of room", footer("1–8 tabs · 9 settings · / keys · ⌥⌘m toggle"));
    const ZOLRowCell::Texts texts { "a row", "with a subtitle", "and a reason" };
    const auto cell = [&](const ZOLRowCell::Leading& leading) {
        return new ZOLRowCell(leading, texts, frameWidth / 2, nothing);
    };
    sheet.view("row", cell(ZOLAppMark::ostrel));
    sheet.view("row, hover", cell("z"), enter);
    sheet.view("row, selected", cell(ZOLAppMark::tessit),
        [](QWidget& view) { dynamic_cast<ZOLRowCell&>(view).setSelected(true); });
    sheet.view("row, keyboard", cell("z"), [](QWidget& view) { view.setFocus(); });
}

void drawTabHelpers(Sheet& sheet)
{
    sheet.section("what tabs are built from");
    sheet.view("section", section("this mac · power, storage & network", frameWidth));
    sheet.view("box", filledBox());
}

void drawHintCards(Sheet& sheet)
{
    StillServices still;
    sheet.section("hint cards");
    const auto card = [&](const QString& title, const QString& fact, const QStringList& labels, int width) {
        std::vector<ZOLHintCard::Action> actions;
        for (const QString& label : labels)
            actions.push_back({ label, nothing });
        return new ZOLHintCard(
            title, fact, std::move(actions), ZOLVoxelModels::ostrel(), still.services, {}, 0, width);
    };
    sheet.view("pressure",
        card("OS pressure · warning", "Pressure stayed elevated. Inspect workloads.", { "inspect", "30m" },
            400));
    sheet.view("preview",
        card(
            "Companion preview", "This is a preview. Inspect opens workloads.", { "inspect", "close" }, 400));
    sheet.view("three actions, long texts",
        card(QString("a title that goes on ").repeated(8),
            QString("and a fact that does as well ").repeated(8), { "one", "two", "three" },
            ZOLHintCard::defaultWidth));
    sheet.view("no action", card("pellam", "Nothing to press here.", {}, ZOLHintCard::defaultWidth));
}

} // namespace ostrel
