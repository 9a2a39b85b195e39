// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLFooterLine.h"

#include "design/Accessibility.h"
#include "design/Utf8.h"
#include "design/ZOLAppShellStyle.h"
#include "design/controls/ShellRow.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/controls/ZOLThemeButton.h"

namespace ostrel {

namespace {

constexpr int lineHeight = 22;
constexpr int partSpacing = 16;
constexpr int appsWidth = 68;
constexpr int escResistance = 750;
constexpr int statusResistance = 250;

ZOLShellLabel* line(const QString& text)
{
    return ZOLAppShellStyle::label(
        text, ZOLAppShellStyle::footerSize(), QFont::Normal, ZOLAppShellStyle::muted);
}

} // namespace

QString ZOLFooterLine::appsTooltip()
{
    return utf16(catalogueHost) + ": the catalog of the ZOL apps opens in the browser";
}

ZOLFooterLine::ZOLFooterLine(const Content& content, int width, QWidget* parent)
    : QWidget(parent)
    , keysLabel_(line(content.keys))
    , escLabel_(line(content.esc))
    , statusLabel_(line(content.status))
    , extras_(content.extras)
    , themeButton_(content.theme)
{
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName("hints");
    setFixedSize(width, lineHeight);
    escLabel_->setObjectName("hint-esc");
    escLabel_->setMaximumLines(1);
    statusLabel_->setMaximumLines(1);
    statusLabel_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* row = new ShellRow(this, partSpacing);
    row->add(keysLabel_);
    row->add(escLabel_, escResistance);
    row->add(ZOLAppShellStyle::spacer());
    for (QWidget* extra : extras_)
        row->add(extra);
    if (themeButton_)
        row->add(themeButton_);
    if (content.apps) {
        appsButton_ = new ZOLShellButton(
            utf16(appsTitle), appsWidth, content.apps, int(ZOLAppShellStyle::quietHeight));
        appsButton_->setObjectName("apps-open");
        appsButton_->setToolTip(appsTooltip());
        row->add(appsButton_);
    }
    row->add(statusLabel_, statusResistance);
}

void ZOLFooterLine::setKeys(const QString& text) { keysLabel_->setText(text); }

void ZOLFooterLine::setStatus(const QString& text) { statusLabel_->setText(text); }

} // namespace ostrel
