// SPDX-License-Identifier: Apache-2.0
#include "Samples.h"
#include "Sheet.h"
#include "StillServices.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/voxel/AutomationVoxelView.h"
#include "design/voxel/VoxelFigure.h"
#include "design/voxel/VoxelScene.h"
#include "design/voxel/VoxelView.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"

#include <utility>

namespace ostrel {

namespace {

/// A figure as it is so many seconds into a run.
void drawMoment(Sheet& sheet, const QString& caption, VoxelFigure figure, double seconds)
{
    figure.step(seconds);
    sheet.drawing(caption, QSizeF(110, 110), [&](QPainter& painter, const QRectF& rect) {
        // It flies beyond its margins, and the view that holds it cuts it off.
        painter.setClipRect(rect);
        fillRounded(painter, rect, OstrelStyle::radius, ZOLAppShellStyle::plate);
        const std::vector<double> progress = figure.progress();
        drawQuads(painter,
            VoxelScene::scene(figure.cubes(), { rect.x(), rect.y(), rect.width(), rect.height() },
                { .progress = progress }));
    });
}

} // namespace

void drawFigures(Sheet& sheet)
{
    StillServices still;
    sheet.section("figures");
    for (const ZOLVoxelModel& model : ZOLVoxelModels::all())
        sheet.drawing(utf16(model.label), QSizeF(130, 130), [&](QPainter& painter, const QRectF& rect) {
            fillRounded(painter, rect, OstrelStyle::radius, ZOLAppShellStyle::plate);
            painter.drawImage(
                rect.topLeft(), ZOLVoxelView::image(model, rect.size(), false, sheet.ratio()).image);
        });
    sheet.row();
    for (const ZOLVoxelModel& model : ZOLVoxelModels::all())
        sheet.drawing(
            utf16("template, " + model.name), QSizeF(40, 40), [&](QPainter& painter, const QRectF& rect) {
                painter.drawImage(rect.topLeft(),
                    tinted(ZOLVoxelView::image(model, rect.size(), true, sheet.ratio()),
                        OstrelStyle::ink.in(sheet.theme())));
            });
    const auto character = [&] {
        auto* view = new ZOLVoxelView(ZOLVoxelModels::ostrel(), still.services);
        view->setPadding(0);
        view->setShowsShadow(false);
        view->setFixedSize(40, 40);
        ZOLThemePolicy::plate(*view);
        return view;
    };
    sheet.row();
    sheet.view("character on its plate", character());
    sheet.view("with the keyboard", character(), [](QWidget& view) { view.setFocus(); });
    auto* natural = new ZOLVoxelView(ZOLVoxelModels::ostrel(), still.services);
    ZOLThemePolicy::plate(*natural);
    sheet.view("at its own size", natural);
    VoxelFigure clicked(ZOLVoxelModels::tessit());
    clicked.beginClick();
    for (const auto& [caption, seconds] : { std::pair { "click, 0.1 s", 0.1 }, { "0.2 s", 0.2 },
             { "0.45 s, mirrored", 0.45 }, { "0.6 s", 0.6 } })
        drawMoment(sheet, caption, clicked, seconds);
    VoxelFigure appearing(ZOLVoxelModels::ostrel());
    appearing.beginAppear();
    for (const auto& [caption, seconds] :
        { std::pair { "appear, 0.15 s", 0.15 }, { "0.3 s", 0.3 }, { "0.45 s", 0.45 }, { "0.6 s", 0.6 } })
        drawMoment(sheet, caption, appearing, seconds);
}

void drawBadges(Sheet& sheet)
{
    StillServices still;
    sheet.section("companion and badges");
    for (const char* mood : { "calm", "attention" }) {
        auto* companion = new VoxelView(126, 138, false, still.services);
        companion->setMood(mood);
        sheet.view(mood, companion);
    }
    sheet.row();
    for (const AutomationVoxelState state : AutomationBadge::states)
        for (const AutomationVoxelFamily family : AutomationBadge::families)
            sheet.view(utf16(std::string(AutomationBadge::rawValue(family))
                                 .append(", ")
                                 .append(AutomationBadge::word(state))),
                new AutomationVoxelView(family, state, family == AutomationVoxelFamily::panel ? 36 : 18));
}

} // namespace ostrel
