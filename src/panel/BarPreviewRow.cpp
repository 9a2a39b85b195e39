// SPDX-License-Identifier: Apache-2.0
#include "panel/BarPreviewRow.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/StillImage.h"
#include "design/Utf8.h"
#include "design/ZOLAppMarkView.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QWidget>

namespace ostrel {

namespace {

constexpr int blockHeight = 40;
constexpr int inset = 12;
constexpr int spacing = 8;
constexpr int markSize = static_cast<int>(ZOLAppMarkView::menuBarSize);
/// What is left beside the mark and the longest caption.
constexpr int valueWidth = 490;

/// The mark as the bar has it, in the colour of the texts.
class BarMark final : public QWidget {
public:
    BarMark() { setFixedSize(markSize, markSize); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        const double ratio = devicePixelRatioF();
        const StillImage mark
            = ZOLAppMarkView::image(ZOLAppMark::ostrel, ZOLAppMarkView::menuBarSize, true, ratio);
        QPainter(this).drawImage(QPoint(), tinted(mark, OstrelStyle::ink.in(appearanceOf(*this))));
    }
};

class Block final : public QWidget {
public:
    Block() { setFixedSize(contentWidth, blockHeight); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        fillRounded(painter, QRectF(rect()), OstrelStyle::radius, OstrelStyle::fill.in(appearanceOf(*this)));
    }
};

} // namespace

QWidget* barPreviewRow(const BarPreview& words, LiveRegistry& live)
{
    auto* block = new Block;
    block->setObjectName("bar-preview");
    setAccessibleRole(*block, QAccessible::Grouping);
    block->setAccessibleName(utf16(words.accessibilityLabel));
    auto* across = new QHBoxLayout(block);
    across->setContentsMargins(inset, 0, inset, 0);
    across->setSpacing(spacing);
    if (words.mark)
        across->addWidget(new BarMark);
    auto* value = fixedLabel(utf16(words.title), 11, QFont::Medium, OstrelStyle::ink, valueWidth);
    value->setObjectName("bar-preview-value");
    live.add("bar-preview", value);
    across->addWidget(value);
    across->addStretch(1);
    across->addWidget(lineLabel(utf16(words.mode), 10, QFont::Normal, OstrelStyle::muted));
    return block;
}

} // namespace ostrel
