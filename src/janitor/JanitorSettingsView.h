// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace ostrel {

class JanitorTab;

/// The janitor's section of the settings, that many points wide: protected names and the caches that may be
/// emptied. The janitor must outlive the view. Main thread.
[[nodiscard]] QWidget* janitorSettingsView(JanitorTab& janitor, int width);

} // namespace ostrel
