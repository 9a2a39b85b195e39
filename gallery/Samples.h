// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ostrel {

class Sheet;

/// Fills a sheet with one of everything.
void drawSamples(Sheet& sheet);

void drawColors(Sheet& sheet);
void drawFaces(Sheet& sheet);
void drawMarks(Sheet& sheet);
void drawFigures(Sheet& sheet);
void drawBadges(Sheet& sheet);
void drawButtons(Sheet& sheet);
void drawFrame(Sheet& sheet);
void drawTabHelpers(Sheet& sheet);
void drawHintCards(Sheet& sheet);
void drawReadings(Sheet& sheet);

} // namespace ostrel
