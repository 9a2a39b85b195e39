// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Workspace.h"

#include "support/Observers.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A desktop whose wishes for less movement and for shapes the test sets.
class FakeWorkspace final : public platform::Workspace {
public:
    [[nodiscard]] bool accessibilityDisplayShouldReduceMotion() const override { return reduceMotion_; }

    [[nodiscard]] bool accessibilityDisplayShouldDifferentiateWithoutColor() const override
    {
        return differentiate_;
    }

    [[nodiscard]] std::unique_ptr<platform::Observation> observeDisplayOptions(platform::Job changed) override
    {
        return observers.add(std::move(changed));
    }

    void setReduceMotion(bool reduce)
    {
        reduceMotion_ = reduce;
        observers.tell();
    }

    void setDifferentiateWithoutColor(bool differentiate)
    {
        differentiate_ = differentiate;
        observers.tell();
    }

    void open(const std::string& url) override { opened.push_back(url); }

    Observers observers;
    std::vector<std::string> opened;

private:
    bool reduceMotion_ = false;
    bool differentiate_ = false;
};
