// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/PrivateBus.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <QApplication>
#include <QDeadlineTimer>

#include <chrono>
#include <clocale>
#include <cstdlib>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

/// The toolkit without a display, on a bus and in a home of the program's own. One per test program; make it
/// with `[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment)`.
class QtEnvironment final : public testing::Environment {
public:
    void SetUp() override
    {
        home_.emplace();
        bus_.emplace();
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus_->address().c_str(), 1);
        ::setenv("XDG_RUNTIME_DIR", home_->path().c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::unsetenv("DISPLAY");
        ::unsetenv("WAYLAND_DISPLAY");
        application_ = std::make_unique<QApplication>(count_, arguments_);
        std::setlocale(LC_NUMERIC, "C");
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void TearDown() override
    {
        application_.reset();
        bus_.reset();
        home_.reset();
    }

private:
    char name_[5] = "test";
    char* arguments_[2] = { name_, nullptr };
    int count_ = 1;
    std::optional<TemporaryHome> home_;
    std::optional<PrivateBus> bus_;
    std::unique_ptr<QApplication> application_;
};

/// Runs the event loop until the condition holds; false when it doesn't within the generous limit.
template <typename Condition>
bool spinUntil(Condition condition)
{
    const QDeadlineTimer limit { std::chrono::milliseconds(generousLimit) };
    while (!condition()) {
        if (limit.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}
