// SPDX-License-Identifier: Apache-2.0
/// What the analyst prints, whatever it is, becomes something to show.
#include "collector/Diagnosis.h"

#include "fuzz/FuzzTarget.h"

void runOn(std::string_view text)
{
    (void)ostrel::readDiagnosis(text, 0, "analyst");
    check(!ostrel::readDiagnosis(text, 1, "analyst").empty());
}
