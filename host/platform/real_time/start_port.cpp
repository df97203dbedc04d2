#include "host/platform/real_time/start_port.h"

#include "host/platform/serial/serial_line.h"
#include "host/platform/serial/serial_name.h"
#include "host/program/settings.h"
#include "host/window/ground/title.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"

#include <cstdint>
#include <string_view>

namespace orvanel {

namespace {

constexpr std::int32_t option_baud = 115'200;

/// The speed that the device's name asks for, else `otherwise`.
std::int32_t baud_of(std::string_view device, std::int32_t otherwise) {
    SerialName name{};
    return parse_serial_name(device, name).empty() && name.baud > 0 ? name.baud : otherwise;
}

std::string& device_of(int port) { return port_devices[static_cast<std::size_t>(port - 1)]; }

}  // namespace

std::string serial_option_fault(const std::string& serial) {
    SerialName name{};
    return parse_serial_name(serial, name);
}

void name_devices(const std::string& serial, const std::string& folder) {
    set_serial_folder(folder);
    if (!serial.empty()) device_of(1) = serial;
    for (int port = 1; port <= most_serial_ports; ++port)
        set_serial_device(port, device_of(port));
}

std::string open_start_port(const std::string& serial) {
    const bool by_option = !serial.empty();
    const int port = by_option ? 1 : com_setting;
    if (port > 0) {
        com_baud.store(baud_of(device_of(port), by_option ? option_baud : baud_setting));
        unsaved_baud = com_baud.load();
    }
    com_select(port, com_baud.load());
    title_update();
    if (by_option) unsaved_port = com_port.load();
    return com_port.load() == port ? "" : serial_fault;
}

std::string new_peer_name(const std::string& serial) {
    SerialName name{};
    const bool named_by_system =
        parse_serial_name(serial, name).empty() &&
        (name.kind == SerialKind::pty || (name.kind == SerialKind::tcp && name.port == 0));
    return named_by_system && com_port.load() > 0 ? serial_peer_name(com_port.load()) : "";
}

}  // namespace orvanel
