// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace ostrel {

class JanitorTab;

/// The findings, each with what it proposes, that many points wide. The janitor must outlive the view. The
/// first view of findings or of the cleanup starts the first reading. Main thread.
[[nodiscard]] QWidget* findingsView(JanitorTab& janitor, int width);

} // namespace ostrel
