// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/HoverTip.h"
#include "history/HistoryGraph.h"

#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// The line graph of the dashboard, of fixed size: one percentage a minute, with a mark where the restored
/// samples end and this run begins. Under the pointer it tells the nearest sample and its time. Main thread.
class OstrelHistoryView final : public QWidget {
public:
    /// Samples in percent and their minutes since 1970, oldest first; width and height in points.
    /// `liveBoundary` is the index of the first sample of this run.
    OstrelHistoryView(std::vector<double> samples, std::vector<std::int64_t> minutes, std::string caption,
        qreal width, qreal height = HistoryGraph::defaultHeight,
        std::optional<std::size_t> liveBoundary = std::nullopt);

    /// Shows these samples. It is drawn anew only when they or the boundary differ from what it holds.
    void apply(std::vector<double> samples, std::vector<std::int64_t> minutes,
        std::optional<std::size_t> liveBoundary);

    [[nodiscard]] const std::vector<double>& samples() const { return samples_; }
    [[nodiscard]] const std::string& caption() const { return caption_; }
    [[nodiscard]] std::optional<std::size_t> liveBoundary() const { return liveBoundary_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void measure();

    std::vector<double> samples_;
    std::vector<std::int64_t> minutes_;
    std::string caption_;
    qreal width_;
    qreal height_;
    std::optional<std::size_t> liveBoundary_;
    std::vector<HistoryGraph::Point> line_; ///< the samples as they are drawn
    HoverTip tip_;
};

} // namespace ostrel
