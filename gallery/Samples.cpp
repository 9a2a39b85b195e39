// SPDX-License-Identifier: Apache-2.0
#include "Samples.h"

namespace ostrel {

void drawSamples(Sheet& sheet)
{
    drawColors(sheet);
    drawFaces(sheet);
    drawMarks(sheet);
    drawFigures(sheet);
    drawBadges(sheet);
    drawButtons(sheet);
    drawFrame(sheet);
    drawTabHelpers(sheet);
    drawHintCards(sheet);
    drawReadings(sheet);
}

} // namespace ostrel
