#include "host/platform/desktop/scale.h"

#include <QImage>

#include <cmath>
#include <cstddef>

namespace orvanel {

namespace {

int floor_of(qreal value) { return static_cast<int>(std::floor(value)); }
int ceil_of(qreal value) { return static_cast<int>(std::ceil(value)); }

bool is_there(const Outline& outline, int x, int y) {
    if (x >= outline.width || y >= outline.height) return false;
    const std::size_t stride = static_cast<std::size_t>(outline.width + 7) / 8;
    const std::size_t at = static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) / 8;
    return (outline.rows[at] << (x % 8) & 0x80) != 0;
}

}  // namespace

QPoint window_pixel(QPointF at, qreal scale) {
    return {floor_of(at.x() * scale), floor_of(at.y() * scale)};
}

QRect covering(PixelRect pixels, qreal scale) {
    const QPoint from(floor_of(pixels.left / scale), floor_of(pixels.top / scale));
    const QPoint to(ceil_of(pixels.right / scale), ceil_of(pixels.bottom / scale));
    return {from, QSize(to.x() - from.x(), to.y() - from.y())};
}

PixelRect covered(const QRect& area, qreal scale) {
    return {floor_of(area.left() * scale), floor_of(area.top() * scale),
            ceil_of((area.left() + area.width()) * scale),
            ceil_of((area.top() + area.height()) * scale)};
}

QSize widget_size(int width, int height, qreal scale) {
    return {ceil_of(width / scale), ceil_of(height / scale)};
}

QBitmap mask_of(const Outline& outline, qreal scale) {
    const QSize size = widget_size(outline.width, outline.height, scale);
    QImage mask(size, QImage::Format_MonoLSB);
    mask.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    mask.fill(0);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            if (const QPoint at = window_pixel(QPointF(x + 0.5, y + 0.5), scale);
                is_there(outline, at.x(), at.y()))
                mask.setPixel(x, y, 1);
    return QBitmap::fromImage(mask);
}

int whole_height(int height, qreal scale) {
    constexpr int tries = 16;
    constexpr qreal nothing = 0.01;
    for (int h = height; h < height + tries; ++h)
        if (std::abs(h * scale - std::round(h * scale)) < nothing) return h;
    return height;
}

}  // namespace orvanel
