// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace ostrel {

class JanitorTab;

/// The cleanup tab's body: what can be listed and then removed or stopped, and what was, that many points
/// wide. The janitor must outlive the view. Main thread.
[[nodiscard]] QWidget* cleanupView(JanitorTab& janitor, int width);

} // namespace ostrel
