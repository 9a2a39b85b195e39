// SPDX-License-Identifier: Apache-2.0
#include "bar/AboutWindow.h"

#include "core/Version.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/ZOLAppMarkView.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLShellLabel.h"

#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include <string_view>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr QSize windowSize { 320, 372 };
constexpr int spacing = 8;
constexpr int markGap = 6; ///< beside the spacing, between the mark and the name
constexpr double markSize = 168;
constexpr double nameSize = 20;
constexpr double lineSize = 11;
constexpr double sentenceSize = 10;
constexpr int textWidth = 292;

constexpr std::string_view sentence
    = "Native memory monitor for macOS. Readings stay on this Mac. The mark is the shared Zolwerk drawing; "
      "the voxel character of the same model stands in the panel header.";

class Content final : public QWidget {
public:
    Content()
        : QWidget(nullptr, Qt::Window)
    {
        setWindowTitle("about OSTREL");
        setFixedSize(windowSize);
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(spacing);
        column->addStretch();
        auto* mark = new ZOLAppMarkView(ZOLAppMark::ostrel, markSize);
        mark->setToolTip("OSTREL · product mark");
        ZOLThemePolicy::plate(*mark);
        column->addWidget(mark, 0, Qt::AlignHCenter);
        column->addSpacing(markGap);
        const auto add = [column](ZOLShellLabel* label) {
            label->setAlignment(Qt::AlignHCenter);
            column->addWidget(label, 0, Qt::AlignHCenter);
        };
        add(lineLabel("OSTREL", nameSize, QFont::DemiBold, OstrelStyle::ink));
        add(lineLabel(utf16(fmt::format("{} · build {} · local + server", appVersion, appBuild)), lineSize,
            QFont::Normal, OstrelStyle::muted));
        add(wrappingLabel(utf16(sentence), sentenceSize, QFont::Normal, OstrelStyle::ink, textWidth));
        add(wrappingLabel(
            utf16(fmt::format("One of the small instruments of the Zolwerk family: catalogue at {}",
                ZOLFooterLine::catalogueHost)),
            sentenceSize, QFont::Normal, OstrelStyle::muted, textWidth));
        column->addStretch();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), resolved(OstrelStyle::bg, *this));
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close))
            close();
        else
            QWidget::keyPressEvent(event);
    }
};

} // namespace

AboutWindow::AboutWindow() = default;

AboutWindow::~AboutWindow() = default;

void AboutWindow::show()
{
    if (!window_)
        window_ = std::make_unique<Content>();
    if (!window_->isVisible())
        window_->move(window_->screen()->availableGeometry().center() - window_->rect().center());
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void AboutWindow::applyTheme(ZOLThemePolicy::Mode mode)
{
    if (!window_)
        return;
    setAppearance(*window_, mode);
    window_->update();
}

} // namespace ostrel
