// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/HoverTip.h"
#include "history/Sparkline.h"
#include "platform/Workspace.h"

#include <QWidget>

#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// The strip of bars of the system tab, of fixed size. Under the pointer it tells a sample's value and age.
/// Where the user wants more than colour to tell, high bars have a cap. Main thread.
class SparklineHoverView final : public QWidget {
public:
    /// Samples in percent, oldest first; width and height in points. Without samples it says so, and keeps
    /// its own caption.
    SparklineHoverView(
        std::vector<int> samples, int width, int height, std::string caption, platform::Workspace& workspace);
    ~SparklineHoverView() override;

    [[nodiscard]] const std::vector<int>& samples() const { return samples_; }
    [[nodiscard]] const std::string& caption() const { return caption_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<int> samples_;
    std::string caption_ = "history";
    std::vector<Sparkline::Bar> bars_;
    platform::Workspace& workspace_;
    std::unique_ptr<platform::Observation> displayOptions_;
    HoverTip tip_;
};

/// A strip of these samples. The workspace outlives it.
[[nodiscard]] QWidget* makeSparkline(const std::vector<int>& samples, int width, int height,
    std::string caption, platform::Workspace& workspace);

} // namespace ostrel
