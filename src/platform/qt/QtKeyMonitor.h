// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/EventMonitor.h"

#include <functional>
#include <memory>

#include <QObject>

namespace platform {

/// The keys that go down in the program's windows, before any of its views gets them. Of those that are taken
/// no view hears, and repetitions of a key that stays down are told to nobody.
///
/// On an X display the keyboard is held for as long as one of our windows has it: else a combination that
/// another program has registered would go there and never come here. It is let go with the focus.
class QtKeyMonitor final : public QObject, public Observation {
public:
    /// The application object exists. `take` says whether it takes the key.
    explicit QtKeyMonitor(std::function<bool(const KeyDown&)> take);
    QtKeyMonitor(const QtKeyMonitor&) = delete;
    QtKeyMonitor& operator=(const QtKeyMonitor&) = delete;
    ~QtKeyMonitor() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void holdKeyboard();

    // It may be destroyed inside its own job.
    std::shared_ptr<std::function<bool(const KeyDown&)>> take_;
};

} // namespace platform
