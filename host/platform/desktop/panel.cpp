#include "host/platform/desktop/panel.h"

#include "host/platform/desktop/main_window.h"
#include "host/window/ground/ports_panel.h"
#include "host/window/roof/menu_command.h"
#include "seam/window_system.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orvanel {

namespace {

constexpr int panel_width = 164, panel_height = 62;
constexpr QRect frame_area(4, 0, panel_width - 8, panel_height - 4);

// The number below each light.
constexpr int lights = static_cast<int>(ports_on_panel);
constexpr int number_top = 38, number_height = 16;

/// A light as it was drawn last.
struct Light {
    QPoint at;
    QImage image;
};

/// The lights and their numbers, above the frame.
class Lights final : public QWidget {
  public:
    using QWidget::QWidget;

    void draw(QPoint at, const QImage& image) {
        const auto found = std::ranges::find(drawn, at, &Light::at);
        if (found == drawn.end())
            drawn.push_back({at, image});
        else
            found->image = image;
        update(QRect(at, image.size()));
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        for (int i = 0; i < lights; ++i)
            painter.drawText(
                QRect(first_light_x + light_distance * i, number_top, led_size, number_height),
                Qt::AlignHCenter | Qt::AlignTop, QString::number(i + 1));
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        for (const Light& light : drawn)
            painter.drawImage(light.at, light.image);
    }

  private:
    std::vector<Light> drawn;
};

class Panel final : public QWidget {
  public:
    explicit Panel(QWidget* parent)
        : QWidget(parent, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                              Qt::WindowCloseButtonHint | Qt::WindowDoesNotAcceptFocus) {
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_QuitOnClose, false);
        setWindowTitle(QStringLiteral("OUT-Ports"));
        setFixedSize(panel_width, panel_height);
        auto* const frame = new QGroupBox(QStringLiteral("output"), this);
        frame->setGeometry(frame_area);
        lights_above = new Lights(this);
        lights_above->setGeometry(rect());
    }

    void draw(QPoint at, const QImage& image) { lights_above->draw(at, image); }

    void keep_corner() const {
        const QPoint corner = frameGeometry().topLeft();
        if (isVisible() && can_place_windows()) ports_moved(corner.x(), corner.y());
    }

  protected:
    /// The rules close it.
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        ports_boxed();
    }

  private:
    Lights* lights_above;
};

constinit Panel* panel = nullptr;

}  // namespace

bool open_ports_panel(PixelPoint at) {
    panel = new Panel(main_window);
    if (can_place_windows()) panel->move(place_on_screen({at.x, at.y}, panel->size()));
    panel->show();
    return true;
}

void close_ports_panel() {
    if (panel == nullptr) return;
    panel->keep_corner();
    panel->hide();
    panel->deleteLater();
    panel = nullptr;
}

void keep_panel_place() {
    if (panel != nullptr) panel->keep_corner();
}

void draw_led(int window, PixelPoint at, std::span<const std::uint32_t> pixels) {
    if (panel == nullptr || window != ports_panel_window) return;
    const QImage borrowed(reinterpret_cast<const uchar*>(pixels.data()), led_size, led_size,
                          QImage::Format_ARGB32);
    panel->draw({at.x, at.y}, borrowed.copy());
}

}  // namespace orvanel
