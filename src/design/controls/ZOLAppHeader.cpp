// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLAppHeader.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/ZOLAppMarkView.h"
#include "design/ZOLAppShellStyle.h"
#include "design/controls/ShellRow.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLPinButton.h"
#include "design/controls/ZOLShellLabel.h"

#include <QVBoxLayout>

namespace ostrel {

namespace {

constexpr int wordSpacing = 2;
constexpr int settingsWidth = 72;
constexpr int closeWidth = 28;
constexpr int wordsResistance = 750;
constexpr int versionResistance = 250;

ZOLShellLabel* elided(const QString& text, double size, QFont::Weight weight, const ThemedColor& color)
{
    ZOLShellLabel* label = ZOLAppShellStyle::label(text, size, weight, color);
    label->setMaximumLines(1);
    return label;
}

} // namespace

ZOLAppHeader::ZOLAppHeader(const Content& content, int width, QWidget* parent)
    : QWidget(parent)
    , row_(new ShellRow(this, int(ZOLAppShellStyle::gap)))
{
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(content.name + " header");
    setFixedSize(width, int(ZOLAppShellStyle::markSize));
    markView_ = new ZOLAppMarkView(content.mark, ZOLAppShellStyle::markSize);
    ZOLThemePolicy::plate(*markView_);
    row_->add(markView_);
    row_->add(words(content), wordsResistance);
    row_->add(ZOLAppShellStyle::spacer());
    if (content.version) {
        versionLabel_ = elided(
            *content.version, ZOLAppShellStyle::footerSize(), QFont::Medium, ZOLAppShellStyle::muted);
        versionLabel_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row_->add(versionLabel_, versionResistance);
    }
    if (content.onSettings) {
        settingsButton_ = new ZOLShellButton("settings", settingsWidth, content.onSettings);
        settingsButton_->setObjectName("settings");
        settingsButton_->setToolTip("settings: switches, keys and the menu bar mode of this app");
        row_->add(settingsButton_);
    }
    if (content.pin) {
        pinButton_ = content.pin;
        row_->add(pinButton_);
    }
    if (content.onClose) {
        closeButton_ = new ZOLShellButton("×", closeWidth, content.onClose);
        closeButton_->setObjectName("close-panel");
        closeButton_->setToolTip("close · esc");
        closeButton_->setAccessibleName("close panel");
        row_->add(closeButton_);
    }
}

QWidget* ZOLAppHeader::words(const Content& content)
{
    auto* words = new QWidget;
    auto* column = new QVBoxLayout(words);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(wordSpacing);
    nameLabel_ = elided(content.name, ZOLAppShellStyle::titleSize, QFont::DemiBold, ZOLAppShellStyle::ink);
    column->addWidget(nameLabel_);
    if (content.status) {
        statusLabel_
            = elided(*content.status, ZOLAppShellStyle::subtitleSize, QFont::Medium, ZOLAppShellStyle::muted);
        column->addWidget(statusLabel_);
    }
    return words;
}

void ZOLAppHeader::setStatus(const QString& text)
{
    if (statusLabel_)
        statusLabel_->setText(text);
}

void ZOLAppHeader::setVersion(const QString& text)
{
    if (versionLabel_)
        versionLabel_->setText(text);
}

void ZOLAppHeader::replaceMark(QWidget* view)
{
    constexpr int size = int(ZOLAppShellStyle::markSize);
    view->setFixedSize(size, size);
    ZOLThemePolicy::plate(*view);
    row_->replace(markView_, view);
    markView_ = nullptr;
    // Assistive technology reads views in the order in which they lie above each other.
    view->lower();
}

} // namespace ostrel
