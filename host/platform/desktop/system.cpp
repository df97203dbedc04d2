// What window_system.h asks of the desktop beside our windows: clipboard, other programs, help.

#include "base/bmp.h"
#include "host/platform/desktop/text.h"
#include "seam/window_system.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QUrl>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>
#include <xcb/xcb.h>

namespace orvanel {

void set_clipboard(std::span<const std::uint8_t> dib) {
    const Bytes file = bmp_file(dib);
    const QImage picture = QImage::fromData(file.data(), static_cast<int>(file.size()), "BMP");
    if (!picture.isNull()) QApplication::clipboard()->setImage(picture);
}

void activate_other_window(std::uint32_t number) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const display = x11 == nullptr ? nullptr : x11->connection();
    if (display == nullptr) return;  // a platform can speak X11 and have no server
    const QByteArray name = "_NET_ACTIVE_WINDOW";
    xcb_intern_atom_reply_t* atom = xcb_intern_atom_reply(
        display,
        xcb_intern_atom(display, 0, static_cast<std::uint16_t>(name.size()), name.constData()),
        nullptr);
    if (atom == nullptr) return;
    xcb_client_message_event_t wish{};
    wish.response_type = XCB_CLIENT_MESSAGE;
    wish.format = 32;
    wish.window = number;
    wish.type = atom->atom;
    // The user has asked for it, as in a task bar: not a window that pushes itself to the front.
    wish.data.data32[0] = 2;
    std::free(atom);
    std::array<char, 32> bytes{};  // the length of every event
    static_assert(sizeof wish == bytes.size());
    std::memcpy(bytes.data(), &wish, bytes.size());
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    xcb_send_event(display, 0, screen->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   bytes.data());
    xcb_flush(display);
}

void start_program(const std::string& command) {
    QStringList words = QProcess::splitCommand(to_qt(command));
    if (words.isEmpty()) return;
    const QString program = words.takeFirst();
    QProcess::startDetached(program, words);
}

void show_help(const std::string& path) {
    const QString page = to_qt(path);
    if (QFileInfo::exists(page) && QDesktopServices::openUrl(QUrl::fromLocalFile(page))) return;
    const std::string text = QFileInfo::exists(page)
                                 ? "Nothing here can show the manual. It is in\n" + path
                                 : "The manual is not installed. It would be\n" + path;
    open_message_box(MessageOf::host, "HD Orvanel42 simulator", text);
}

void sound_beep() { QApplication::beep(); }

}  // namespace orvanel
