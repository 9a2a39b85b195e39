// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/PanelBody.h"
#include "core/Readout.h"

#include <string>
#include <vector>

/// A panel that draws nothing and keeps, in order, what it was asked for.
class FakePanel final : public ostrel::PanelBody, public ostrel::Readout {
public:
    [[nodiscard]] ostrel::OstrelMode mode() const override { return tab; }
    [[nodiscard]] bool shown() const override { return open; }
    void renderBody() override { calls.emplace_back("render"); }
    void renderBodyThrottled(bool force) override { calls.emplace_back(force ? "forced" : "throttled"); }
    void switchMode(ostrel::OstrelMode mode) override { tab = mode; }
    void set(std::string_view text) override { calls.push_back("readout " + std::string(text)); }
    void refresh() override { calls.emplace_back("readout"); }

    ostrel::OstrelMode tab = ostrel::OstrelMode::overview;
    bool open = true;
    std::vector<std::string> calls;
};
