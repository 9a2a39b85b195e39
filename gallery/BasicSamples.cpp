// SPDX-License-Identifier: Apache-2.0
#include "Samples.h"
#include "Sheet.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/ZOLAppMarkView.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"

#include <array>

namespace ostrel {

void drawColors(Sheet& sheet)
{
    sheet.section("colours");
    constexpr std::array shown { OstrelStyle::bg, OstrelStyle::ink, OstrelStyle::muted, OstrelStyle::soft,
        OstrelStyle::hair, OstrelStyle::fill, OstrelStyle::hover, OstrelStyle::red,
        ZOLAppShellStyle::role("evidence"), ZOLAppShellStyle::role("warning"),
        ZOLAppShellStyle::role("success"), ZOLAppShellStyle::role("info") };
    for (const ThemedColor& color : shown)
        sheet.drawing(utf16(color.token), QSizeF(92, 40), [&](QPainter& painter, const QRectF& rect) {
            fillRounded(painter, rect, OstrelStyle::radius, color.in(sheet.theme()));
            outlineRounded(painter, rect, OstrelStyle::radius, OstrelStyle::hair.in(sheet.theme()));
        });
}

void drawFaces(Sheet& sheet)
{
    sheet.section("faces");
    for (const double size : { 10.0, 11.0, 14.0, 24.0 })
        for (const auto& [name, weight] : { std::pair { "regular", QFont::Normal },
                 std::pair { "medium", QFont::Medium }, std::pair { "semibold", QFont::DemiBold } })
            sheet.view(QString("%1 %2").arg(name).arg(size),
                lineLabel("swap 24% · 0.96 gb", size, weight, OstrelStyle::ink));
    sheet.view("signs, borrowed where the family has none",
        lineLabel(QString::fromUtf8("● ○ ◉ □ ■ △ ▲ ▼ ⌘ ⌥ ⇧ ⌃ ↗ · – “four rays”, четыре луча"), 14,
            QFont::Normal, OstrelStyle::ink));
    auto* limited = wrappingLabel("A text that is longer than the two lines that it may take ends where they "
                                  "end, with an ellipsis, and never in the middle of a letter.",
        11, QFont::Normal, OstrelStyle::muted, 300);
    limited->setMaximumLines(2);
    sheet.view("two lines at most", limited);
}

void drawMarks(Sheet& sheet)
{
    sheet.section("marks");
    for (const ZOLAppMark mark : ZOLAppMarks::all) {
        auto* view = new ZOLAppMarkView(mark);
        ZOLThemePolicy::plate(*view);
        sheet.view(utf16(ZOLAppMarks::label(mark)), view);
    }
    auto* pressed = new ZOLAppMarkView(ZOLAppMark::ostrel);
    ZOLThemePolicy::plate(*pressed);
    pressed->setOnClick([] {});
    sheet.view("with the keyboard", pressed, [](QWidget& view) { view.setFocus(); });
    for (const double size : { 16.0, 18.0, 22.0, 48.0 })
        sheet.drawing(
            QString("template %1").arg(size), QSizeF(size, size), [&](QPainter& painter, const QRectF& rect) {
                painter.drawImage(rect.topLeft(),
                    tinted(ZOLAppMarkView::image(ZOLAppMark::ostrel, size, true, sheet.ratio()),
                        OstrelStyle::ink.in(sheet.theme())));
            });
}

} // namespace ostrel
