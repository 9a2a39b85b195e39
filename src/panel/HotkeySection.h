// SPDX-License-Identifier: Apache-2.0
#pragma once

class QVBoxLayout;

namespace ostrel {

class HotkeyController;

/// Draws the hotkey's section into the settings, below its heading. The controller must outlive the body.
void renderHotkeySection(QVBoxLayout& body, HotkeyController& hotkeys);

} // namespace ostrel
