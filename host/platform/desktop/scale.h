// scale.h: between the pixels in which the toolkit counts and those of the window, which are the
// device's own (host/skin/view.h). On a screen of scale 1.25 a toolkit pixel is 1.25 of ours. All
// of the desktop's mouse, drop, mask, size and paint go through here.

#pragma once

#include "host/skin/outline.h"
#include "seam/platform.h"

#include <QBitmap>
#include <QPointF>
#include <QRect>
#include <QSize>

namespace orvanel {

/// The window pixel under a place of the widget; below 0 left of it and above.
QPoint window_pixel(QPointF at, qreal scale);

/// The smallest rectangle of toolkit pixels that covers these window pixels, and the smallest of
/// window pixels that covers those.
QRect covering(PixelRect pixels, qreal scale);
PixelRect covered(const QRect& area, qreal scale);

/// The size of a widget that shows so many window pixels.
QSize widget_size(int width, int height, qreal scale);

/// The outline as a mask of the widget: a toolkit pixel is there if the window pixel at its middle
/// is.
QBitmap mask_of(const Outline& outline, qreal scale);

/// The smallest height from `height` on that is a whole number of window pixels, so that what lies
/// below begins on one; `height` itself if none of the next 16 is.
int whole_height(int height, qreal scale);

}  // namespace orvanel
