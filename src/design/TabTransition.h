// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace ostrel {

/// Lets what a view shows now fade into what it shows next, sliding in from the right (`forward`) or the left
/// unless the user wants no movement. Call it on the view around the content, before the content changes;
/// nothing happens while that view can't be seen. Meanwhile a picture named "shaperTabFade" lies over the
/// content and lets the mouse through; it goes by itself, or at once when the view is hidden or changes its
/// size, or with the next call. Main thread.
void shaperTabTransition(QWidget& layer, bool forward, bool reduceMotion);

} // namespace ostrel
