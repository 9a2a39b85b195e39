// SPDX-License-Identifier: Apache-2.0
#include "bar/BarItem.h"

#include "core/Version.h"

#include <optional>
#include <utility>

namespace ostrel {

BarItem::BarItem(Owner owner)
    : owner_(std::move(owner))
{
}

void BarItem::setupStatusItem(std::shared_ptr<const platform::StatusItemPicture> mark)
{
    mark_ = std::move(mark);
    statusItem_ = owner_.statusBar.makeItem(std::string(appIdentifier), "ostrel", std::string());
    statusItem_->setMenuBuilder([this] { return menu(); });
    statusItem_->setPressHandler([this](const platform::StatusItemPress&) { owner_.panel.toggle(); });
    updateStatusButton();
}

std::optional<platform::Rect> BarItem::frame() const
{
    const auto placement = statusItem_ ? statusItem_->placement() : std::nullopt;
    return placement ? std::optional(placement->frame) : std::nullopt;
}

void BarItem::removeStatusItem() { statusItem_.reset(); }

void BarItem::updateStatusButton()
{
    if (!statusItem_)
        return;
    const BarDisplayMode mode = owner_.settings.barDisplayMode;
    statusItem_->setFace({ .visible = mode != BarDisplayMode::hidden,
        .label = title(),
        .toolTip = barToolTip(reading()),
        .icon = mark_,
        .picture = mark_ });
}

std::string BarItem::title() const
{
    return barTitle(owner_.settings.barDisplayMode, owner_.settings.barParts, reading());
}

platform::Menu BarItem::menu() const
{
    platform::Menu rows;
    rows.push_back({ .title = barMenuHeadline(reading()) });
    rows.push_back({ .separator = true });
    rows.push_back({ .title = "show panel", .action = [this] { owner_.panel.show(); } });
    rows.push_back({ .separator = true });
    rows.push_back({ .title = "quit", .action = [this] { owner_.quit(); } });
    return rows;
}

BarReading BarItem::reading() const
{
    BarReading reading { .stats = owner_.tick.native(),
        .cpu = owner_.tick.lastCPU(),
        .mcp = std::nullopt,
        .source = owner_.snapshots.backendLastSource() };
    if (const auto& data = owner_.snapshots.lastData())
        for (const auto& entry : data->fan)
            if (entry.key == "mcp")
                reading.mcp = entry.count;
    return reading;
}

} // namespace ostrel
