// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/AppDelegate.h"

#include "support/FakePlatform.h"

#include <QAbstractButton>
#include <QLabel>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The application over a fake platform, and what is to be read in its panel.
struct AppBench : FakePlatform {
    AppBench()
    {
        bundle.resources.emplace("collectors/ostrel.py", "/opt/ostrel.py");
        // The popover's view stands on its own.
        popovers.onView = [this](QWidget* view) {
            // A handler of the one before may be at work.
            if (view_) {
                view_->hide();
                old_.push_back(std::move(view_));
            }
            view_.reset(view);
            if (view)
                view->setVisible(popovers.open);
            else
                old_.clear();
        };
        popovers.onShown = [this](bool shown) { view_->setVisible(shown); };
    }

    /// The start sequence; this process is to stay.
    void start(const ostrel::LaunchWish& wish = {})
    {
        if (!delegate.applicationDidFinishLaunching(wish))
            throw std::logic_error("an elder instance runs");
    }

    /// Lets the fetch that waits, or a new one, be answered by the script with this text, or a failure that
    /// says so.
    void fetch(const std::string& output, const std::string& failure = {})
    {
        answer(output, failure.empty() ? 0 : 1, failure);
        delegate.snapshots().fetchPythonData();
        settleBackground();
    }

    /// Lets all that waits in the background come to its end; what a first drawing starts gets no answer.
    void settleBackground()
    {
        do
            deliver();
        while (!globalQueue.waiting.empty());
    }

    [[nodiscard]] QWidget& root() { return *delegate.frame().rootView(); }

    /// The texts of all labels on screen.
    [[nodiscard]] QStringList texts()
    {
        QStringList all;
        for (const QLabel* label : root().findChildren<QLabel*>())
            if (label->isVisible())
                all.push_back(label->text());
        return all;
    }

    /// The button on screen with that name for assistive technology; null without one.
    [[nodiscard]] QAbstractButton* button(const QString& name)
    {
        for (QAbstractButton* button : root().findChildren<QAbstractButton*>())
            if (button->accessibleName() == name && button->isVisible())
                return button;
        return nullptr;
    }

private:
    // The popover's end, which comes with the application's, drops them.
    std::vector<std::unique_ptr<QWidget>> old_;
    std::unique_ptr<QWidget> view_;

public:
    ostrel::AppDelegate delegate { services() };
};

/// A snapshot with that many processes.
[[nodiscard]] inline std::string snapshotText(int processes)
{
    std::string rows;
    for (int n = 0; n < processes; ++n)
        rows += std::string(n ? "," : "") + R"({"rss":)" + std::to_string(4000 - n) + R"(,"pid":")"
            + std::to_string(100 + n) + R"(","name":"<b>p)" + std::to_string(n)
            + R"(</b>","grp":"node","cmd":"node <i>x</i> &amp;","cpu":1.5})";
    return R"({"ts":"12:00:00","ram":{},"swap":{},"fan":{"mcp":7},"procs":[)" + rows + "]}";
}
