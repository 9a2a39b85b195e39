// SPDX-License-Identifier: Apache-2.0
#pragma once

class QPainter;
class QWidget;

namespace ostrel {

/// Paints what a field to type in stands on: round corners, an outline, and a ring while it has the keyboard.
void paintFieldGround(QPainter& painter, const QWidget& field);

/// Lets that ground show behind a field's text: the toolkit would fill it squarely. To be called again when
/// the field's palette changes.
void showThrough(QWidget& field);

} // namespace ostrel
