// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace platform {

/// Brings a shown window to the front and gives it the keyboard, in a later turn of the loop. Window managers
/// refuse programs that ask with an old time, as after a press that reached us over the bus: this one asks
/// with the display's present time. Main thread.
void takeKeyboard(QWidget& window);

} // namespace platform
