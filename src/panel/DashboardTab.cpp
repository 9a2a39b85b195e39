// SPDX-License-Identifier: Apache-2.0
#include "panel/DashboardTab.h"

#include "core/Text.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "readings/NativeStats.h"

#include <QFrame>
#include <QGridLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int cardGap = 12;
constexpr int cardInset = 14;

/// A filled plate that holds one reading.
class Plate final : public QFrame {
protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        fillRounded(painter, QRectF(rect()), OstrelStyle::radius, OstrelStyle::fill.in(appearanceOf(*this)));
    }
};

QWidget* card(LiveRegistry& live, const std::string& caption, const std::string& key,
    const std::string& subKey, const std::string& sub)
{
    auto* plate = new Plate;
    auto* column = new QVBoxLayout(plate);
    column->setContentsMargins(cardInset, cardInset, cardInset, cardInset);
    column->setSpacing(4);
    column->addWidget(lineLabel(utf16(caption), 11, QFont::Normal, OstrelStyle::muted));
    auto* value = lineLabel("–", 24, QFont::DemiBold, OstrelStyle::ink);
    live.add(key, value);
    column->addWidget(value);
    auto* below = lineLabel(utf16(sub), 11, QFont::Normal, OstrelStyle::muted);
    if (!subKey.empty())
        live.add(subKey, below);
    column->addWidget(below);
    column->addStretch();
    return plate;
}

} // namespace

void renderOverview(QVBoxLayout& body, const PanelState& state, LiveRegistry& live)
{
    const NativeStats native = state.tick.native();
    auto* cards = new QGridLayout;
    cards->setSpacing(cardGap);
    const std::string processors = fmt::format("{} cores · load {:.2f}", native.ncpu, native.load1);
    cards->addWidget(card(live, "cpu", "cpu", "", processors), 0, 0);
    cards->addWidget(card(live, "memory", "mem", "mem-sub", ""), 0, 1);
    cards->addWidget(card(live, "swap", "swap", "swap-sub", ""), 1, 0);
    cards->addWidget(card(live, "pressure " + std::string(pressureName(native.pressureLevel)), "free", "",
                         "memory that nothing uses"),
        1, 1);
    cards->setColumnStretch(0, 1);
    cards->setColumnStretch(1, 1);
    body.addLayout(cards);
    body.addSpacing(cardGap);
    auto* caption = wrappingLabel("", 11, QFont::Normal, OstrelStyle::muted);
    live.add("history-caption-cpu", caption);
    body.addWidget(caption);
    auto* age = wrappingLabel("", 11, QFont::Normal, OstrelStyle::muted);
    live.add("snapshot-age", age);
    body.addWidget(age);
}

} // namespace ostrel
