// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "views/AppBench.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScrollArea>

#include <cstdint>
#include <string>
#include <vector>

/// The views of that kind in a tree, in their order; the toolkit's own search doesn't know our kinds.
template <typename View>
std::vector<View*> all(const QWidget& root)
{
    std::vector<View*> found;
    for (QWidget* view : root.findChildren<QWidget*>())
        if (auto* one = dynamic_cast<View*>(view))
            found.push_back(one);
    return found;
}

/// The open panel with a snapshot on one of its tabs.
struct OpenTab : AppBench {
    explicit OpenTab(ostrel::OstrelMode mode, const std::string& snapshot = snapshotText(3))
    {
        kernel.reading = { .swapTotalBytes = 4096 * mb,
            .swapUsedBytes = 1536 * mb,
            .load1 = 2.5,
            .activeProcessorCount = 4,
            .pressureLevel = 1,
            .physicalMemoryBytes = 15872 * mb,
            .usedBytes = 11776 * mb,
            .freeBytes = 2048 * mb };
        workspace.setReduceMotion(true);
        start();
        fetch(snapshot);
        if (mode != delegate.frame().mode())
            delegate.frame().switchMode(mode);
        settle();
    }

    void settle()
    {
        time.advance(platform::Seconds(0.01));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // What the deleted ones stood on is painted in a turn of its own.
        QCoreApplication::processEvents();
    }

    /// The next tick, in which the processor was that busy.
    void tick(std::uint32_t cpu)
    {
        kernel.ticks->user += cpu;
        kernel.ticks->idle += 100 - cpu;
        time.advance(delegate.tick().nativeInterval());
    }

    [[nodiscard]] QWidget& page() { return *root().findChild<QScrollArea*>()->widget(); }

    /// What the tab says, in its order.
    [[nodiscard]] QStringList said()
    {
        QStringList all;
        for (const QLabel* label : page().findChildren<QLabel*>())
            all.push_back(label->text());
        return all;
    }

    static constexpr std::uint64_t mb = 1048576;
};
