// SPDX-License-Identifier: Apache-2.0
#include "panel/DashboardTab.h"

#include "core/Text.h"
#include "design/TabLayout.h"
#include "design/Utf8.h"
#include "readings/NativeStats.h"

#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int cardGap = 12;
constexpr int cardInset = 14;

/// A filled plate that holds one reading.
class Plate final : public QFrame {
public:
    explicit Plate(const OstrelStyle& style)
        : style_(style)
    {
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(style_.fill);
        painter.drawRoundedRect(QRectF(rect()), OstrelStyle::radius, OstrelStyle::radius);
    }

private:
    OstrelStyle style_;
};

QWidget* card(const OstrelStyle& style, LiveRegistry& live, const std::string& caption,
    const std::string& key, const std::string& subKey, const std::string& sub)
{
    auto* plate = new Plate(style);
    auto* column = new QVBoxLayout(plate);
    column->setContentsMargins(cardInset, cardInset, cardInset, cardInset);
    column->setSpacing(4);
    column->addWidget(lineLabel(utf16(caption), OstrelStyle::mono(11), style.muted));
    auto* value = lineLabel("–", OstrelStyle::mono(24, QFont::DemiBold), style.ink);
    live.add(key, value);
    column->addWidget(value);
    auto* below = lineLabel(utf16(sub), OstrelStyle::mono(11), style.muted);
    if (!subKey.empty())
        live.add(subKey, below);
    column->addWidget(below);
    column->addStretch();
    return plate;
}

} // namespace

void renderOverview(QVBoxLayout& body, const PanelState& state, const OstrelStyle& style, LiveRegistry& live)
{
    const NativeStats native = state.tick.native();
    auto* cards = new QGridLayout;
    cards->setSpacing(cardGap);
    const std::string processors = fmt::format("{} cores · load {:.2f}", native.ncpu, native.load1);
    cards->addWidget(card(style, live, "cpu", "cpu", "", processors), 0, 0);
    cards->addWidget(card(style, live, "memory", "mem", "mem-sub", ""), 0, 1);
    cards->addWidget(card(style, live, "swap", "swap", "swap-sub", ""), 1, 0);
    cards->addWidget(card(style, live, "pressure " + std::string(pressureName(native.pressureLevel)), "free",
                         "", "memory that nothing uses"),
        1, 1);
    cards->setColumnStretch(0, 1);
    cards->setColumnStretch(1, 1);
    body.addLayout(cards);
    body.addSpacing(cardGap);
    auto* caption = wrappingLabel("", OstrelStyle::mono(11), style.muted);
    live.add("history-caption-cpu", caption);
    body.addWidget(caption);
    auto* age = wrappingLabel("", OstrelStyle::mono(11), style.muted);
    live.add("snapshot-age", age);
    body.addWidget(age);
}

} // namespace ostrel
