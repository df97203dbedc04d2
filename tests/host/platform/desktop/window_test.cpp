// The window program as it runs, but for its main, under Qt's offscreen platform.

#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/requests.h"
#include "firmware/store/ground/eeprom.h"
#include "host/bridge/bridge.h"
#include "host/platform/desktop/boxes.h"
#include "host/platform/desktop/main_window.h"
#include "host/platform/desktop/scale.h"
#include "host/platform/desktop/window.h"
#include "host/program/settings.h"
#include "host/requests/painter.h"
#include "host/skin/lcd_colours.h"
#include "host/skin/view.h"
#include "host/window/ground/dialog.h"
#include "host/window/ground/menu.h"
#include "host/window/ground/ports_panel.h"
#include "host/window/roof/menu_command.h"
#include "host/window/roof/window_timer.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "seam/host_calls.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHelpEvent>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSlider>
#include <QTimer>
#include <QUrl>
#include <QWidget>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

// On a busy machine whatever is waited for may take long; what hangs takes for ever.
constexpr std::chrono::minutes generous{5};

// From corner to corner.
const std::string line_across = "\x1bGD\x00\x00\xEF\x7F"s;

class Window : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "orvanel42";
        static char* argv[] = {name, nullptr};
        application = new QApplication(argc, argv);
        ASSERT_EQ(prepare_view(), "");
    }
    static void TearDownTestSuite() { delete application; }

    void SetUp() override {
        shutdown_requested = false;  // of the run before
        tick_enabled = false;
        view_zoom = 2;
        show_frame = true;
        skin_model = 0;
        set_backlight_level(1);
        model_apply();
        eeprom_reset_to(eeprom_small, {});
    }

    static QApplication* application;
};

QApplication* Window::application = nullptr;

/// Opens the window with a feed of these bytes.
void open_with(const std::string& bytes) {
    // A name of its own: tests run side by side.
    const std::string path =
        testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name();
    std::ofstream(path, std::ios::binary) << bytes;
    ASSERT_TRUE(prepare_window());
    ASSERT_EQ(open_window(path), "");
    std::filesystem::remove(path);
}

QWidget* the_window() { return main_window; }

/// Runs the event loop until `ready`, for `generous` at most. True if it became ready.
bool run_until(const std::function<bool()>& ready) {
    const auto end = steady_clock::now() + generous;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        if (ready() || steady_clock::now() > end) QCoreApplication::exit();
    });
    look.start(5);
    QCoreApplication::exec();
    return ready();
}

void run_for(milliseconds duration) {
    QTimer::singleShot(duration, [] { QCoreApplication::exit(); });
    QCoreApplication::exec();
}

/// The armed feed has gone through the pipe to its last byte.
bool all_read() { return feed_left() == 0 && rx_count() == 0; }

// Writes past the end of the image, and a restart, which tells so.
const std::string overflow = "\x1b&E\xFE\x7F\x04\x00Wabcd\x1b&E\x00\x00\x00\x00J"s;

std::vector<std::uint8_t> bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

/// An open message box that has `word` in its text, none if none is.
QMessageBox* message_box(const QString& word = {}) {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* box = qobject_cast<QMessageBox*>(widget);
            box != nullptr && box->isVisible() && box->text().contains(word))
            return box;
    return nullptr;
}

/// The open dialog, none if none is.
QDialog* dialog() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* box = qobject_cast<QDialog*>(widget); box != nullptr && box->isVisible())
            return box;
    return nullptr;
}

/// Normal macro 0 is `body`.
std::vector<std::uint8_t> image_with_macro(std::string_view body) {
    std::vector<std::uint8_t> image(eeprom_small, 0xFF);
    const auto put = [&image](std::size_t at, std::string_view bytes) {
        std::copy(bytes.begin(), bytes.end(), image.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(normal_macro_table, {"\x30\x0E", 2});
    image[normal_macro_table + 2] = static_cast<std::uint8_t>(body.size());
    image[normal_macro_table + 3] = 0;
    put(data_start, body);
    return image;
}

}  // namespace

TEST_F(Window, shows_what_the_feed_draws) {
    open_with(line_across);
    const QPoint corner(74, 38);
    const auto set = 0xFF000000 | dib_colour(*view_lcd, 1);
    QImage picture;
    // The line's last dot is two by two pixels; its first is under the terminal's cursor.
    EXPECT_TRUE(run_until([&] {
        picture = glass->grab().toImage();
        return picture.pixel(corner + QPoint(478, 254)) == set;
    }));
    close_window();
    ASSERT_EQ(picture.size(), QSize(584, 328));
    EXPECT_EQ(picture.pixel(corner + QPoint(479, 255)), set);
    for (const QPoint clear : {QPoint(479, 0), QPoint(0, 255), QPoint(479, 253)})
        EXPECT_EQ(picture.pixel(corner + clear), 0xFF000000 | dib_colour(*view_lcd, 0))
            << clear.x();
}

TEST_F(Window, a_hidden_window_does_not_hold_up_the_firmware) {
    std::string lines;
    for (int i = 0; i < 200; ++i)
        lines += line_across;
    const std::uint32_t before = paints_served();
    open_with(lines);
    the_window()->hide();
    EXPECT_TRUE(run_until([before] { return all_read() && paints_served() - before >= 200; }));
    close_window();
}

TEST_F(Window, stands_where_it_stood_and_is_brought_back) {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    struct Case {
        QPoint at, shown, moved_to, kept;
    };
    for (const auto& [at, shown, moved_to, kept] :
         {Case{{70, 80}, {70, 80}, {70, 80}, {70, 80}},
          Case{{screen.width(), 0}, {100, 60}, {30, 40}, {30, 40}},
          Case{{5, 5}, {5, 5}, {5, -5}, {0, 0}}}) {
        SetUp();
        window_x = at.x();
        window_y = at.y();
        open_with("");
        const auto corner = [] { return the_window()->frameGeometry().topLeft(); };
        EXPECT_TRUE(run_until([&] { return corner() == shown; })) << corner().x();
        the_window()->move(moved_to);
        // This platform has its own idea of where off the screen a window can be.
        EXPECT_TRUE(run_until([&] { return moved_to == shown || corner() != shown; }));
        if (moved_to != kept) the_window()->close();
        close_window();
        EXPECT_EQ(QPoint(window_x, window_y), kept);
    }
}

TEST_F(Window, closing_it_ends_the_event_loop) {
    open_with("");
    QTimer::singleShot(milliseconds{50}, the_window(), &QWidget::close);
    EXPECT_EQ(QCoreApplication::exec(), 0);
    close_window();
}

TEST_F(Window, a_message_holds_the_firmware_until_it_is_closed) {
    open_with(overflow);
    ASSERT_TRUE(run_until([] { return message_box() != nullptr; }));
    EXPECT_TRUE(message_box()->text().startsWith("not enough EEPROM memory (32kB)"));
    EXPECT_EQ(message_box()->windowTitle(), "Error: HD Orvanel42 simulator");
    rx_pipe_put_block(std::vector<std::uint8_t>{'x'});
    run_for(milliseconds{50});
    show_message("Error: HD Orvanel42 simulator", "of the host");
    ASSERT_NE(message_box("of the host"), nullptr);
    EXPECT_FALSE(message_box("of the host")->isModal());
    EXPECT_TRUE(message_box("memory")->isModal());
    message_box("of the host")->accept();
    run_for(milliseconds{50});
    EXPECT_EQ(rx_count(), 1) << "nothing is read behind the message";
    message_box()->accept();
    EXPECT_TRUE(run_until([] { return message_box() == nullptr && rx_count() == 0; }));
    close_window();
    EXPECT_EQ(eeprom_image[0x7FFF], 0xFF) << "the image that overflowed is wiped";
}

TEST_F(Window, takes_nothing_in_a_message_for_markup) {
    QString shown;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        QMessageBox* const box = message_box("<b>");
        if (box == nullptr) return;
        const auto* const label = box->findChild<QLabel*>("qt_msgbox_label");
        shown = label->textFormat() == Qt::PlainText ? label->text() : QString();
        box->accept();
    });
    look.start(5);
    show_fault_box("Error", "cannot save <b>bold</b>/simulator.ini");
    EXPECT_EQ(shown, "cannot save <b>bold</b>/simulator.ini");
}

TEST_F(Window, ends_at_once_in_every_kind_of_wait) {
    std::string endless_stream;
    while (endless_stream.size() < 1'000'000)
        endless_stream += line_across + "#DI";
    std::uint32_t paints_before = 0;
    const auto settled = [] { return all_read(); };
    const auto drawing_on = [&] { return all_read() && paints_served() - paints_before > 100; };
    const auto streaming = [] { return feed_left() > 0 && rx_count() > 0; };
    struct Case {
        const char* wait;
        std::string sent;
        std::string macro;
        std::function<bool()> reached;
    };
    const Case cases[]{
        {"empty read", "", "", settled},
        {"string", "\x1bZL\x0A\x0Ano end"s, "", settled},
        {"number", "#GD1", "", settled},
        {"wait command", "\x1bX\xFF"s, "", settled},
        {"data of a write", "\x1b&E\x00\x00\xFF\x7FWabc"s, "", settled},
        {"message box", overflow, "", [] { return message_box() != nullptr; }},
        {"paint", endless_stream, "", streaming},
        {"tail-calling macro", "\x1bMN\x00"s, "\x1bMN\x00"s, settled},
        {"tail-calling macro that draws", "\x1bMN\x00"s, "#DI\x1bMN\x00"s, drawing_on},
    };
    for (const auto& [wait, sent, macro, reached] : cases) {
        SCOPED_TRACE(wait);
        SetUp();
        paints_before = paints_served();
        if (!macro.empty()) eeprom_reset_to(eeprom_small, image_with_macro(macro));
        open_with(sent);
        EXPECT_TRUE(run_until(reached));
        run_for(milliseconds{30});
        close_window();
        EXPECT_EQ(feed_left(), 0);
    }
}

TEST_F(Window, builds_its_menu_from_the_table_and_marks_what_holds) {
    open_with("");
    const QList<QAction*> top = main_window->menuBar()->actions();
    ASSERT_EQ(top.size(), 4);
    QMenu* const view = top[1]->menu();
    EXPECT_EQ(view->title(), "&View");
    QAction* const zoom_2 = view->actions()[1];
    QAction* const zoom_3 = view->actions()[2];
    EXPECT_EQ(zoom_3->shortcut(), QKeySequence("Ctrl+3"));
    zoom_3->trigger();
    EXPECT_EQ(glass->size(), QSize(876, 492));
    EXPECT_TRUE(zoom_3->isChecked());
    EXPECT_FALSE(zoom_2->isChecked());
    zoom_3->trigger();
    EXPECT_TRUE(zoom_3->isChecked()) << "Qt turns the mark of each item that is chosen";
    close_window();
}

TEST_F(Window, shows_the_choice_of_the_dialog_at_once_and_lets_the_menu_wait) {
    open_with("");
    menu_command(item_model + custom_model);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_EQ(dialog()->windowTitle(), "LCD Custom Type - no standard");
    EXPECT_EQ(dialog()->findChild<QSlider*>("6040")->value(), 100);
    EXPECT_EQ(dialog()->focusWidget(), dialog()->findChild<QWidget*>("60052"));
    dialog()->findChild<QRadioButton*>("6012")->click();
    EXPECT_EQ(lcd_type, 2);
    EXPECT_EQ(dialog_value(6012), 1);
    EXPECT_EQ(dialog_value(6011), 0);
    dialog()->findChild<QSlider*>("6040")->setValue(0);
    EXPECT_EQ(dialog_value(6040), 0) << "where the user left it";
    EXPECT_EQ(backlight_light.load().backlight_level, 0);
    menu_command(item_zoom + 2);
    zoom_by_wheel(1);
    EXPECT_EQ(view_zoom, 2) << "the box is open";
    dialog()->findChild<QPushButton*>("6051")->click();
    EXPECT_EQ(dialog(), nullptr);
    EXPECT_EQ(backlight_light.load().backlight_level, 1);
    EXPECT_EQ(view_zoom, 3);
    zoom_by_wheel(9);
    EXPECT_EQ(view_zoom, 8);
    zoom_by_wheel(-9);
    EXPECT_EQ(view_zoom, 1);
    menu_command(item_model + custom_model);
    dialog()->close();
    EXPECT_EQ(skin_model, custom_model) << "the close box brings nothing back";
    menu_command(item_model);
    close_window();
}

TEST_F(Window, fades_and_lights_its_lamps_as_the_module_says) {
    open_with("");
    ports_open();
    QWidget* panel = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->windowTitle() == "OUT-Ports") panel = widget;
    ASSERT_NE(panel, nullptr);
    const auto lamp = [panel] { return panel->grab().toImage().pixelColor(12 + 7, 20 + 7); };
    // The reset of the start empties the pipe.
    ASSERT_TRUE(run_until([] { return tick_enabled.load(); }));
    rx_pipe_put_block(bytes_of("#YH50,#YW1,0,"));
    EXPECT_TRUE(run_until([&] { return lamp() == QColor(0, 255, 0); }));
    rx_pipe_put_block(bytes_of("#YW1,1,"));
    EXPECT_TRUE(run_until([&] { return lamp() == QColor(0, 128, 0); }));
    EXPECT_TRUE(run_until([] { return backlight_light.load().backlight_level == 50; }));
    panel->close();
    EXPECT_FALSE(ports_opened());
    close_window();
}

TEST_F(Window, what_was_put_off_waits_again_for_a_box_that_comes_before_it) {
    open_with("");
    menu_command(item_model + custom_model);
    menu_command(item_model + custom_model);
    menu_command(item_zoom + 2);
    dialog()->close();
    ASSERT_NE(dialog(), nullptr) << "the second one";
    EXPECT_EQ(view_zoom, 2);
    dialog()->close();
    EXPECT_EQ(dialog(), nullptr);
    EXPECT_EQ(view_zoom, 3);
    menu_command(item_model);
    close_window();
}

TEST_F(Window, sends_typed_keys_to_the_companion) {
    open_with("");
    bridge_message({0x414, {0, 0}});
    const auto press = [](int key, Qt::KeyboardModifiers with, const QString& text) {
        QKeyEvent down(QEvent::KeyPress, key, with, text);
        QApplication::sendEvent(glass, &down);
    };
    press(Qt::Key_F10, Qt::NoModifier, {});
    press(Qt::Key_Tab, Qt::NoModifier, "\t");
    press(Qt::Key_Backtab, Qt::ShiftModifier, {});
    press(Qt::Key_Udiaeresis, Qt::NoModifier, QString(QChar(0xFC)));
    press(Qt::Key_6, Qt::AltModifier | Qt::KeypadModifier, "6");
    press(Qt::Key_Clear, Qt::AltModifier | Qt::KeypadModifier, {});  // 5 without NumLock
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_Alt, Qt::NoModifier);
    QApplication::sendEvent(glass, &up);
    QApplication::sendEvent(glass, &up);  // with no number typed
    for (const int key : {0, 9, 9, 0x81, 65, -1})
        EXPECT_EQ(key_ring_get(), key);
    close_window();
}

TEST_F(Window, lets_a_companion_name_its_window_where_windows_have_no_numbers) {
    qunsetenv("DISPLAY");  // or the toolkit has the X11 that this platform can do without
    open_with("");
    EXPECT_EQ(bridge_message({bridge_introduce, {0, 0x1400007}}), 1u);
    EXPECT_TRUE(activate_terminal());
    close_window();
}

TEST_F(Window, tells_of_bytes_that_are_no_frames_where_the_pointer_rests) {
    open_with("");
    const auto tip = [] {
        QHelpEvent rests(QEvent::ToolTip, {}, {});
        QApplication::sendEvent(glass, &rests);
        return glass->toolTip();
    };
    com_port = 1;
    protocol_on = true;
    EXPECT_FALSE(tip().contains("No frame yet")) << "nothing has come";
    line_bytes_in = 1;
    EXPECT_TRUE(tip().contains("No frame yet: plain bytes vanish"));
    frames_bad = 1;
    EXPECT_FALSE(tip().contains("No frame yet"));
    com_port = 0;
    line_bytes_in = frames_bad = 0;
    close_window();
}

TEST_F(Window, takes_a_file_that_is_dropped_beside_the_glass) {
    open_with("");
    const std::string path = testing::TempDir() + "dropped.blh";
    std::ofstream(path, std::ios::binary) << "\x01\x01\x80"s;
    QMimeData file;
    file.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    const auto offered = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(QPoint(1, 1), offered, &file, Qt::LeftButton, Qt::NoModifier);
    QDropEvent drop(QPointF(1, 1), offered, &file, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(main_window->menuBar(), &enter);
    QApplication::sendEvent(main_window->menuBar(), &drop);
    std::filesystem::remove(path);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    EXPECT_EQ(feed_left(), 8) << "the command for a picture of one dot";
    close_window();
}

TEST_F(Window, is_as_large_as_its_view_whatever_the_scale_of_the_screen) {
    open_with("");
    for (const int item : {item_zoom + 1, item_zoom + 2, item_rotate, item_zoom, item_rotate}) {
        menu_command(item);
        const double scale = glass->devicePixelRatioF();
        EXPECT_EQ(glass->width(), std::ceil(window_width() / scale));
        EXPECT_EQ(glass->height(), std::ceil(window_height() / scale));
    }
    close_window();
}

TEST(Scale, counts_in_whole_pixels_of_the_device) {
    EXPECT_EQ(window_pixel({10.9, -0.1}, 1.5), QPoint(16, -1));
    for (const qreal scale : {1.0, 1.25, 1.5, 2.0})
        for (const int at : {0, 1, 37, 299}) {
            const PixelRect pixels{at, at, at + 5, at + 1};
            const PixelRect around = covered(covering(pixels, scale), scale);
            EXPECT_LE(around.left, pixels.left);
            EXPECT_GE(around.right, pixels.right);
            EXPECT_LE(around.right - around.left, 5 + 2 * 2) << scale;
        }
    EXPECT_EQ(widget_size(292, 164, 1.25), QSize(234, 132));
    EXPECT_EQ(whole_height(23, 1.25), 24);
    EXPECT_EQ(whole_height(23, 1.1), 30);
}

// Everything that crosses threads at once, as often as a race needs to show.
TEST_F(Window, feeds_resets_ticks_and_paints_at_once) {
    std::string stream;
    for (int i = 0; i < 400; ++i)
        stream += line_across +
                  "#ZF0,\x1bZL\x0A\x0Asome text\x00\x1bQI\x00\x00\x30\x30#DI#QZ1 some more\n"s;
    const std::vector<std::uint8_t> bytes(stream.begin(), stream.end());
    const std::uint32_t paints_before = paints_served();
    int resets = -1, ticks = 0, main_paints = 0;
    open_with("");

    const auto every = [](int ms, auto action) {
        auto* timer = new QTimer(the_window());
        QObject::connect(timer, &QTimer::timeout, the_window(), action);
        timer->start(ms);
    };
    every(10, [&] {
        if (feed_left() == 0) start_feed_memory(bytes);
        window_timer();
        ++ticks;
    });
    every(20, [&] {
        if (restart_requested) return;  // the last one isn't done yet
        ++resets;
        request_restart(static_cast<std::uint8_t>(resets & 3));
    });
    every(1, [&] {
        repaint_rect(main_paints % 240, 0, 239, main_paints % 128);
        ++main_paints;
    });
    EXPECT_TRUE(run_until([&] {
        return paints_served() - paints_before >= 2000 &&
               std::min({resets, ticks, main_paints}) >= 300;
    })) << paints_served() - paints_before
        << " paints, " << resets << " resets, " << ticks << " ticks, " << main_paints
        << " paints by the main thread";
    close_window();
}

}  // namespace orvanel
