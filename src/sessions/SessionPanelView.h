// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace ostrel {

class SessionPanel;

/// The terminals of the session panel, `width` points wide. The first drawing starts the first read. The
/// panel must outlive the view. Main thread.
[[nodiscard]] QWidget* sessionPanelView(SessionPanel& sessions, int width);

} // namespace ostrel
