// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LiveViews.h"

#include <functional>
#include <map>
#include <string>

class QLabel;

namespace ostrel {

/// The live labels of the present body, by key. Emptied with each rebuild, before the labels go.
class LiveRegistry final : public LiveViews {
public:
    /// The label that shows the value of `key`; several may share one key.
    void add(const std::string& key, QLabel* label);
    void clear();

    void setText(std::string_view key, std::string_view text) override;
    void updateGauge(
        std::string_view key, double pct, std::optional<double> from, std::string_view level) override;
    void applyGraph(std::string_view key, const std::vector<double>& values,
        std::optional<std::size_t> boundary) override;

private:
    std::multimap<std::string, QLabel*, std::less<>> labels_;
};

} // namespace ostrel
