// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/WindowOcclusion.h"

#include "support/Observers.h"

#include <memory>

/// Windows that the test covers and uncovers, all together.
class FakeOcclusion final : public platform::WindowOcclusion {
public:
    [[nodiscard]] bool covered(platform::WindowHandle) const override { return covered_; }

    [[nodiscard]] std::unique_ptr<platform::Observation> observe(
        platform::WindowHandle, platform::Job changed) override
    {
        return observers.add(std::move(changed));
    }

    void setCovered(bool covered)
    {
        covered_ = covered;
        observers.tell();
    }

    Observers observers;

private:
    bool covered_ = false;
};
