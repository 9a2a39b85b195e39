// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/AppDelegate.h"
#include "platform/ChildProcess.h"

#include <QWidget>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The program's check of itself: it builds the whole panel in a window that is never shown, walks every tab
/// through every state of its data, and tries hotkeys, doors, themes, the hint card and the running of
/// children. Nothing is stored and nothing is registered. It stops at the first check that doesn't hold.
/// Main thread, with an application object and without a running loop; once in a process.
class SelfTest {
public:
    struct Owner {
        AppDelegate& app; ///< idle
        platform::Environment environment;
        std::function<void(std::string_view)> print; ///< a line, its end included
        /// Told of a view that is about to be checked, by the name of the step.
        std::function<void(std::string_view step, QWidget& subject)> aboutToCheck = {};
    };

    explicit SelfTest(Owner owner);
    ~SelfTest();

    /// Runs all of it with the snapshot of that file, or a made-up one. What went wrong; empty when nothing
    /// did.
    [[nodiscard]] std::string run(const std::optional<std::string>& snapshotPath);

private:
    /// What the tabs are drawn from in one of the states.
    struct State {
        std::string_view name;
        const std::optional<OstrelData>& data;
        std::string_view source;
        std::string_view text;
    };

    [[nodiscard]] bool begin(const std::optional<std::string>& snapshotPath);
    [[nodiscard]] bool readSnapshot(const std::optional<std::string>& path);
    [[nodiscard]] bool readNative();
    [[nodiscard]] bool combinations();
    [[nodiscard]] bool combination(const State& state, OstrelMode mode);
    [[nodiscard]] bool frameHolds(OstrelMode mode);
    [[nodiscard]] bool marksHold();
    [[nodiscard]] bool choicesHold();
    /// Footer, pin and the keys of the tabs.
    [[nodiscard]] bool edgesHold();
    [[nodiscard]] bool hintCard();
    [[nodiscard]] bool hotkeyRules();
    [[nodiscard]] bool hotkeyRecorder();
    [[nodiscard]] bool recorderRefuses(const OstrelHotkey& saved);
    [[nodiscard]] bool recorderClears(const OstrelHotkey& saved);
    [[nodiscard]] bool doors();
    [[nodiscard]] bool themes();
    [[nodiscard]] bool theme(ZOLThemePolicy::Mode mode, QWidget& content);
    [[nodiscard]] bool runner();

    /// Keeps what goes wrong first. Whether it holds.
    [[nodiscard]] bool check(bool holds, std::string_view what);
    /// Makes a view the window's only one, at its size.
    void hold(QWidget* content);
    void layOut();
    void tellAbout(std::string_view step, QWidget& subject);
    /// A key goes to the recorder, which has to take it; the tab is then drawn anew.
    [[nodiscard]] bool press(std::uint32_t keyCode, std::uint64_t modifiers, const std::string& characters);
    /// The button's caption, or the label's text, of the first view of that name; empty without one.
    [[nodiscard]] std::string caption(std::string_view identifier) const;
    [[nodiscard]] std::string words(std::string_view identifier) const;
    [[nodiscard]] bool has(std::string_view variable, std::string_view value) const;
    [[nodiscard]] bool savePicture(QWidget& view, const std::string& name);
    void switchTo(OstrelMode mode);

    Owner owner_;
    QWidget window_;
    std::optional<OstrelData> snapshot_;
    std::string hintCardSize_;
    int count_ = 0;
    std::string failure_;
};

} // namespace ostrel
