// SPDX-License-Identifier: Apache-2.0
#include "design/Appearance.h"

#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/ZOLAppShellStyle.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleFactory>
#include <QToolTip>
#include <QWidget>

namespace ostrel {

namespace {

/// Paints the plate before the view paints itself.
class PlateFilter final : public QObject {
public:
    explicit PlateFilter(QWidget& view)
        : QObject(&view)
        , view_(view)
    {
        view.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == &view_ && event->type() == QEvent::Paint) {
            QPainter painter(&view_);
            fillRounded(
                painter, QRectF(view_.rect()), ZOLAppShellStyle::controlRadius(), ZOLAppShellStyle::plate);
        }
        return false;
    }

private:
    QWidget& view_;
};

} // namespace

ZOLThemePolicy::Mode appearanceOf(const QWidget& view)
{
    // The ground tells: only the two appearances are ever set, one near white and one near black.
    constexpr float middle = 0.5F;
    const bool dark = view.palette().color(QPalette::Active, QPalette::Window).lightnessF() < middle;
    return dark ? ZOLThemePolicy::Mode::dark : ZOLThemePolicy::Mode::light;
}

QColor resolved(const ThemedColor& color, const QWidget& view)
{
    return qColor(color.in(appearanceOf(view)));
}

void setAppearance(QWidget& view, ZOLThemePolicy::Mode mode)
{
    view.setPalette(ZOLThemePolicy::appearance(mode));
}

namespace ZOLThemePolicy {

QPalette appearance(Mode mode)
{
    const auto color = [mode](const ThemedColor& themed) { return qColor(themed.in(mode)); };
    QPalette palette;
    for (const auto role : { QPalette::Window, QPalette::Base, QPalette::ToolTipBase, QPalette::Light })
        palette.setColor(role, color(OstrelStyle::bg));
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText,
             QPalette::ToolTipText })
        palette.setColor(role, color(OstrelStyle::ink));
    for (const auto role : { QPalette::Button, QPalette::AlternateBase })
        palette.setColor(role, color(OstrelStyle::fill));
    for (const auto role : { QPalette::Mid, QPalette::Midlight, QPalette::Dark, QPalette::Shadow })
        palette.setColor(role, color(OstrelStyle::hair));
    for (const auto role : { QPalette::Highlight, QPalette::Link, QPalette::LinkVisited })
        palette.setColor(role, color(OstrelStyle::red));
    palette.setColor(QPalette::HighlightedText, qColor(OstrelStyle::bg.light));
    palette.setColor(QPalette::PlaceholderText, color(OstrelStyle::muted));
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, color(OstrelStyle::soft));
    return palette;
}

void apply(Mode mode)
{
    // The desktop's own style would draw scroll bars and fields in its theme and not in ours.
    if (QApplication::style()->name() != QLatin1String("fusion"))
        QApplication::setStyle(QStyleFactory::create("fusion"));
    const QPalette palette = appearance(mode);
    QApplication::setPalette(palette);
    // A menu's grey rows are there to be read.
    QPalette menus = palette;
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        menus.setColor(QPalette::Disabled, role, qColor(OstrelStyle::muted.in(mode)));
    QApplication::setPalette(menus, "QMenu");
    // Tooltips have a palette of the desktop's own.
    QToolTip::setPalette(palette);
}

void plate(QWidget& view)
{
    setAppearance(view, Mode::light);
    // Owned by the view.
    new PlateFilter(view);
    view.update();
}

} // namespace ZOLThemePolicy

} // namespace ostrel
