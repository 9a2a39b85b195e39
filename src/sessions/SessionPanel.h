// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "platform/Bundle.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "sessions/SessionText.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// The way back into a terminal that is open: the list of them, page by page, and the press that brings one
/// to the front. It types into none and closes none. The list is read at the first drawing and on a press,
/// never on a timer. Main thread.
class SessionPanel {
public:
    /// All of it must outlive the panel; `children` and the queues live to the process's end.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        const platform::Bundle& bundle;
        const platform::Clock& clock;
        platform::ChildProcess& children;
    };

    explicit SessionPanel(const Platform& platform);

    /// Connects the panel's body, which must outlive this. Without one the flows only keep state.
    void connect(PanelBody& body) { body_ = &body; }
    /// This process is a self-test: a made-up terminal stands in for the script.
    void setSelfTest(bool selfTest) { state_.selfTest = selfTest; }

    /// What to draw. The first call starts the first read, so it is made by a drawing and by nothing else.
    [[nodiscard]] SessionBody body();

    [[nodiscard]] const SessionState& state() const { return state_; }

    // Presses.

    /// Reads the list anew; nothing while the bridge runs.
    void refresh();
    /// Brings the terminal of that handle to the front; nothing in a self-test, or while the bridge runs.
    void openTerminal(const std::string& handle);
    void previousPage();
    void nextPage();

private:
    /// Runs the bridge and reads its answer off the main thread; an answer that says so stands for none.
    /// `completion` isn't called when the bridge runs already, nor once this is gone.
    template <typename Answer>
    void call(std::vector<std::string> arguments, Answer (*read)(const json::Value&),
        std::function<void(Answer&)> completion);
    void startReading();
    void listed(TerminalListing& listing);
    void showFixture();
    void showPage(std::size_t page);
    /// Draws the tab that shows the block, if it is there.
    void rebuild();

    Platform platform_;
    std::shared_ptr<CollectorRunner> runner_;
    SessionState state_;
    PanelBody* body_ = nullptr;
    LifeToken life_;
};

} // namespace ostrel
