#include "host/platform/terminal/talk.h"

#include "base/bytes.h"
#include "base/hex.h"
#include "base/quoting.h"
#include "base/standard_output.h"
#include "host/bridge/bridge_packing.h"
#include "host/platform/instance/instance_client.h"
#include "host/platform/system/wake.h"
#include "host/platform/terminal/raw_mode.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <span>
#include <string>

namespace orvanel {

namespace {

using std::chrono::steady_clock;

constexpr int look_ms = 20;             // between two looks at what the module has to say
constexpr std::size_t max_input = 384;  // 64 messages
constexpr std::size_t max_taken = 256;  // bytes fetched in one go, 64 messages

constinit int stop_fd = -1;
constinit bool printed = false;    // something, so that the end needs a new line
constinit bool after_hex = false;  // the next HH needs a blank before it

bool was_stopped() {
    pollfd stop{stop_fd, POLLIN, 0};
    return poll(&stop, 1, 0) > 0;
}

/// False if the talk is over.
bool ask(int connection, std::span<const BridgeMessage> messages,
         std::span<std::uint32_t> answers) {
    return ask_instance(connection, messages, answers, {Deadline::max(), stop_fd});
}

bool tell(int connection, std::span<const BridgeMessage> messages) {
    std::vector<std::uint32_t> answers(messages.size());
    return ask(connection, messages, answers);
}

/// The number of the terminal's own window, where the system tells it.
std::uint32_t own_window() {
    const char* number = std::getenv("WINDOWID");
    return number == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(number, nullptr, 10));
}

void print_as_text(std::uint8_t byte) {
    if (byte == '\\')
        write_stdout("\\\\");
    else if (byte >= ' ' && byte <= '~')
        write_stdout(std::string(1, static_cast<char>(byte)));
    else
        write_stdout(byte_escape(static_cast<char>(byte)));
}

void print_answer(std::uint8_t byte, bool hex) {
    printed = true;
    if (!hex) return print_as_text(byte);
    if (after_hex) write_stdout(" ");
    write_stdout(hex_digits(byte, 2));
    after_hex = true;
}

/// What the user types in the window of the module, so that it differs from an answer.
void print_key(std::uint8_t byte) {
    printed = true;
    write_stdout("<key ");
    print_as_text(byte);
    write_stdout(">");
    after_hex = false;
}

/// Fetches and prints so many answers. False if the talk is over.
bool take_answers(const Talk& talk, std::uint32_t count) {
    std::vector<BridgeMessage> messages;
    for (std::uint32_t left = count; left > 0; left -= std::min(left, 4U))
        messages.push_back({bridge_status + std::min(left, 4U), {0, 0}});
    std::vector<std::uint32_t> answers(messages.size());
    if (!ask(talk.connection, messages, answers)) return false;
    for (std::uint32_t i = 0; i < count; ++i)
        print_answer(low8(answers[i / 4] >> 8 * (i % 4)), talk.hex);
    return true;
}

bool take_keys(const Talk& talk, std::uint32_t count) {
    const std::vector<BridgeMessage> messages(count, {bridge_take_key, {0, 0}});
    std::vector<std::uint32_t> answers(count);
    if (!ask(talk.connection, messages, answers)) return false;
    for (const std::uint32_t answer : answers)
        print_key(low8(answer));
    return true;
}

/// Asks what there is, and prints it. `got` says whether there was something. False if the talk is
/// over.
bool take_all(const Talk& talk, bool& got) {
    const BridgeMessage question{bridge_status, {0, own_window()}};
    std::uint32_t status = 0;
    if (!ask(talk.connection, {&question, 1}, {&status, 1})) return false;
    const std::uint32_t count = std::min<std::uint32_t>(status & 0xFFFFFF, max_taken);
    got = count > 0;
    if (count > 0 && !take_answers(talk, count)) return false;
    // A script wants answers; keys stay for a companion that shows them.
    return talk.ends_when_quiet || take_keys(talk, status >> 24);
}

/// Sends what has come on standard input, if anything. `ended` says that no more will come.
bool send_input(const Talk& talk, bool& ended) {
    std::array<std::uint8_t, max_input> bytes{};
    const ssize_t n = read(STDIN_FILENO, bytes.data(), bytes.size());
    ended = n <= 0;
    if (ended) return true;
    return tell(talk.connection,
                bridge_pieces(bridge_send, std::span(bytes).first(static_cast<std::size_t>(n))));
}

/// False if the talk is over.
bool send_orders(const Talk& talk) {
    if (!tell(talk.connection, bridge_pieces(bridge_send, talk.bytes))) return false;
    return talk.file.empty() || tell(talk.connection, bridge_open_messages(talk.file));
}

/// The talk from its orders to its end; false if it broke off.
bool talk_on(const Talk& talk) {
    if (!send_orders(talk)) return false;
    if (!talk.takes_input && !talk.shows_answers) return true;
    bool input_ended = !talk.takes_input;
    bool got = false;
    auto last_time = steady_clock::now();
    for (;;) {
        std::array<pollfd, 2> fds{pollfd{input_ended ? -1 : STDIN_FILENO, POLLIN, 0},
                                  pollfd{stop_fd, POLLIN, 0}};
        poll(fds.data(), fds.size(), got ? 0 : look_ms);
        if (fds[1].revents != 0) return true;
        if (fds[0].revents != 0) {
            if (!send_input(talk, input_ended)) return false;
            last_time = steady_clock::now();
        }
        if (!take_all(talk, got)) return false;
        if (!flush_stdout()) return false;
        if (got) last_time = steady_clock::now();
        const bool quiet =
            steady_clock::now() - last_time >= std::chrono::milliseconds(talk.quiet_ms);
        if (input_ended && (quiet || !talk.ends_when_quiet)) return true;
    }
}

}  // namespace

TalkEnd run_talk(const Talk& talk) {
    stop_fd = open_end_signals();
    if (talk.takes_input) begin_raw_mode();
    const bool done = talk_on(talk);
    if (printed) write_stdout("\n");
    end_raw_mode();
    if (!flush_stdout()) return TalkEnd::no_output;
    return done || was_stopped() ? TalkEnd::done : TalkEnd::module_gone;
}

}  // namespace orvanel
