#include "host/platform/life/start_port.h"

#include "base/nearest.h"
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

constexpr int option_port = 1;
constexpr std::int32_t option_baud = 115'200;
constexpr std::string_view plain_bytes = "plain";
constexpr std::string_view frames = "pactlink";

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
    if (!serial.empty()) device_of(option_port) = serial;
    for (int port = 1; port <= max_com_ports; ++port)
        set_serial_device(port, device_of(port));
}

std::string protocol_option_fault(const std::string& protocol) {
    if (protocol == plain_bytes || protocol == frames) return {};
    return "'" + protocol + "' is neither plain nor pactlink" +
           is_it(protocol, {plain_bytes, frames});
}

void take_protocol_option(const std::string& protocol) {
    if (protocol.empty()) return;
    protocol_setting.of_run = true;
    protocol_on.store(protocol == frames);
}

int start_port(const std::string& serial) {
    return serial.empty() ? port_setting.wanted : option_port;
}

bool is_by_option(int port, const std::string& serial) {
    return !serial.empty() && port == option_port;
}

std::string open_start_port(int port, const std::string& serial) {
    const bool by_option = is_by_option(port, serial);
    if (port > 0) {
        com_baud.store(baud_of(device_of(port), by_option ? option_baud : baud_setting.wanted));
        baud_setting.of_run = true;
    }
    com_select(port, com_baud.load());
    title_update();
    if (by_option) port_setting.of_run = true;
    return com_port.load() == port ? "" : serial_fault;
}

std::string new_peer_name(const std::string& serial) {
    SerialName name{};
    const bool named_by_system =
        parse_serial_name(serial, name).empty() &&
        (name.kind == SerialKind::pty || (name.kind == SerialKind::tcp && name.port == 0));
    return named_by_system && com_port.load() == option_port ? serial_peer_name(option_port) : "";
}

}  // namespace orvanel
