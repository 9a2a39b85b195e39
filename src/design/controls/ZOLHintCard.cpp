// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLHintCard.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/Paint.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/ZOLVoxelView.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr double textSize = 11;
constexpr int mostLines = 2;
constexpr double markPadding = 0.4; // cells
// Points between what stands below each other and beside each other.
constexpr int afterTitle = 4;
constexpr int columnSpacing = 8;
constexpr int buttonSpacing = 6;

std::string_view row(const ZOLMiniAppTokens::Table& table, std::string_view token, std::string_view fallback)
{
    return table.find(token).value_or(fallback);
}

} // namespace

QFont (*ZOLHintCard::font)(double size, QFont::Weight weight) = plexMono;

double ZOLHintCard::radius()
{
    return ZOLMiniAppTokens::number(row(ZOLMiniAppTokens::N1.component, "hint-radius", "16px")).value_or(16);
}

double ZOLHintCard::appearDuration(bool reduceMotion)
{
    return ZOLMiniAppTokens::seconds(
        row(ZOLMiniAppTokens::N1.semantic, "motion-window-appear", "180ms"), reduceMotion);
}

double ZOLHintCard::appearShift()
{
    return ZOLMiniAppTokens::number(row(ZOLMiniAppTokens::N1.semantic, "motion-window-appear-shift", "6px"))
        .value_or(6);
}

ZOLHintCard::ZOLHintCard(const QString& title, const QString& fact, std::vector<Action> actions,
    const ZOLVoxelModel& mark, const MotionServices& services,
    std::function<void(const QString& reason)> onDismiss, double autoHide, int width)
    : services_(services)
    , title_(title)
    , fact_(fact)
    , actions_(std::move(actions))
    , onDismiss_(std::move(onDismiss))
    , autoHide_(autoHide)
    , cardWidth_(width)
    , markView_(new ZOLVoxelView(mark, services))
    , titleLabel_(new ZOLShellLabel(title, font(textSize, QFont::DemiBold), ink))
    , factLabel_(new ZOLShellLabel(fact, font(textSize, QFont::Normal), muted))
{
    if (actions_.size() > maxActions) {
        // Not the formatting library's own printing, which throws where stderr is closed or full.
        std::fputs(
            fmt::format("ZOLHintCard: {} actions given, showing the first {}\n", actions_.size(), maxActions)
                .c_str(),
            stderr);
        actions_.resize(maxActions);
    }
    setAppearance(*this, ZOLThemePolicy::Mode::light);
    setAccessibleRole(*this, QAccessible::Grouping);
    // The keyboard comes to it by a press and not on the way from button to button.
    setFocusPolicy(Qt::ClickFocus);
    build();
    showTitle();
    relayout();
}

void ZOLHintCard::build()
{
    markView_->setFixedSize(markSize, markSize);
    markView_->setShowsShadow(false);
    markView_->setPadding(markPadding);
    for (auto* const label : { titleLabel_, factLabel_ })
        label->setMaximumLines(mostLines);

    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(inset, inset, inset, inset);
    all->setSpacing(0);
    auto* const content = new QWidget;
    all->addWidget(content);
    auto* const across = new QHBoxLayout(content);
    across->setContentsMargins(0, 0, 0, 0);
    across->setSpacing(gap);
    across->addWidget(markView_, 0, Qt::AlignTop);
    auto* const column = new QVBoxLayout;
    column->setSpacing(0);
    across->addLayout(column);
    column->addWidget(titleLabel_);
    column->addSpacing(afterTitle);
    column->addWidget(factLabel_);
    if (!actions_.empty()) {
        column->addSpacing(columnSpacing);
        auto* const buttonRow = new QHBoxLayout;
        buttonRow->setSpacing(buttonSpacing);
        column->addLayout(buttonRow);
        for (const Action& action : actions_) {
            auto* const button = new Button(action.label, static_cast<int>(buttons_.size()));
            button->setHandler([this, tag = button->tag()] { actionPressed(tag); });
            buttonRow->addWidget(button);
            buttons_.push_back(button);
        }
        buttonRow->addStretch();
        fitButtons();
    }
    column->addStretch();
}

void ZOLHintCard::fitButtons()
{
    // Where they don't fit, the widest give way and shorten their captions.
    auto byWidth = buttons_;
    std::ranges::sort(byWidth, {}, &QWidget::width);
    auto left = static_cast<int>(byWidth.size());
    int room = cardWidth_ - 2 * inset - markSize - gap - (left - 1) * buttonSpacing;
    for (Button* const button : byWidth) {
        button->setFixedWidth(std::min(button->width(), room / left));
        room -= button->width();
        --left;
    }
}

void ZOLHintCard::relayout()
{
    const int textWidth = cardWidth_ - 2 * inset - markSize - gap;
    for (auto* const label : { titleLabel_, factLabel_ })
        label->setFixedSize(textWidth, label->heightForWidth(textWidth));
    // What is inside tells of its new size in a later turn only.
    layout()->invalidate();
    layout()->activate();
    setFixedSize(cardWidth_, layout()->sizeHint().height());
}

void ZOLHintCard::showTitle()
{
    titleLabel_->setText(title_);
    setAccessibleName(title_);
    markView_->setToolTip(plainToolTip(title_));
}

void ZOLHintCard::update(const std::optional<QString>& title, const std::optional<QString>& fact)
{
    if (title) {
        title_ = *title;
        showTitle();
    }
    if (fact) {
        fact_ = *fact;
        factLabel_->setText(fact_);
    }
    if (auto* const panel = dynamic_cast<Panel*>(parentWidget()))
        panel->setMessage(title_, fact_);
    relayout();
}

std::unique_ptr<ZOLHintCard::Panel> ZOLHintCard::makePanel(std::unique_ptr<ZOLHintCard> card)
{
    // The panel owns its child from here on.
    return std::make_unique<Panel>(*card.release());
}

void ZOLHintCard::present(Panel& panel, const platform::Point& point)
{
    panel.setFrameOrigin(point);
    if (appearDuration(services_.reduceMotion()) > 0)
        panel.sink(appearShift()); // before it is on screen, so that it doesn't flash up
    panel.orderFrontRegardless();
    appear();
}

void ZOLHintCard::appear()
{
    const bool reduceMotion = services_.reduceMotion();
    markView_->setAssemblesOnAppear(markView_->assemblesOnAppear() && !reduceMotion);
    startAutoHide();
    auto* const panel = dynamic_cast<Panel*>(parentWidget());
    if (!panel)
        return;
    if (const double duration = appearDuration(reduceMotion); duration > 0)
        panel->rise(duration, appearShift());
    else
        panel->settle();
}

void ZOLHintCard::startAutoHide()
{
    cancelAutoHide();
    if (autoHide_ <= 0 || dismissed())
        return;
    services_.mainQueue.postAfter(
        platform::Seconds(autoHide_), life_.guard([this, generation = hideGeneration_] {
            if (generation == hideGeneration_)
                dismiss("expired");
        }));
}

void ZOLHintCard::cancelAutoHide() { ++hideGeneration_; }

void ZOLHintCard::dismiss(const QString& reason)
{
    if (dismissed())
        return;
    dismissReason_ = reason;
    cancelAutoHide();
    // A copy: the callback may destroy the card, and itself with it.
    if (const auto onDismiss = onDismiss_)
        onDismiss(QString(reason));
}

void ZOLHintCard::actionPressed(int tag)
{
    if (tag < 0 || tag >= static_cast<int>(actions_.size()))
        return;
    cancelAutoHide();
    const auto dismissal = life_.guard([this](const QString& reason) { dismiss(reason); });
    const Action action = actions_[static_cast<std::size_t>(tag)];
    if (action.handler)
        action.handler();
    dismissal("action:" + action.label);
}

void ZOLHintCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const double middle = hairline(painter) / 2;
    const QRectF bounds = snapped(painter, QRectF(rect()));
    fillRounded(painter, bounds.adjusted(middle, middle, -middle, -middle), radius() - middle, surface);
    outlineRounded(painter, bounds, radius() - middle, border);
}

void ZOLHintCard::keyPressEvent(QKeyEvent* event)
{
    if (!event->matches(QKeySequence::Cancel)) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    dismiss("escape");
}

} // namespace ostrel
