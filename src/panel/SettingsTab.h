// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "janitor/JanitorTab.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the settings into the body, section by section. The janitor must outlive the body.
void renderSettings(QVBoxLayout& body, JanitorTab& janitor);

} // namespace ostrel
