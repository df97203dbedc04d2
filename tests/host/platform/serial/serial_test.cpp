// The serial line on what this machine has: pseudo terminals, TCP sockets and pipes. A test waits
// for what is to happen, and fails when it doesn't within a minute.

#include "host/platform/serial/serial_name.h"
#include "tests/host/platform/serial/serial_support.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fstream>
#include <thread>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

/// Processor time of this thread.
double cpu_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// All that a line in raw mode must let through.
std::string all_bytes() {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    return bytes;
}

/// Fills the line until it takes no more.
std::size_t fill(int line) {
    const std::vector<std::uint8_t> block(1000, 'x');
    std::size_t all = 0;
    for (int n = 0; (n = real_serial_write(line, block)) > 0;)
        all += static_cast<std::size_t>(n);
    return all;
}

int open_terminal(const fs::path& path) {
    return ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

/// A client of the TCP line behind COM1; the connection is made although nobody has taken it yet.
int connect_to_line() {
    const std::string address = serial_peer_name(1);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    place.sin_port =
        htons(static_cast<std::uint16_t>(std::stoi(address.substr(address.find(':') + 1))));
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
    fcntl(fd, F_SETFL, O_NONBLOCK);
    return fd;
}

using SerialDevice = SerialTest;
using SerialPty = SerialTest;
using SerialTcp = SerialTest;
using SerialStdio = SerialTest;
using SerialLine = SerialTest;

}  // namespace

TEST(SerialNames, say_what_stands_behind_a_port) {
    struct Case {
        const char* text;
        SerialName name;
    };
    const std::vector<Case> cases{
        {"/dev/ttyUSB0", {SerialKind::tty, "/dev/ttyUSB0", 0, "", 0}},
        {"./tty@12345", {SerialKind::tty, "./tty", 12345, "", 0}},
        {"pty", {SerialKind::pty, "", 0, "", 0}},
        {"pty:/tmp/a:b", {SerialKind::pty, "/tmp/a:b", 0, "", 0}},
        {"tcp:7042", {SerialKind::tcp, "", 0, "127.0.0.1", 7042}},
        {"tcp:localhost:0", {SerialKind::tcp, "", 0, "127.0.0.1", 0}},
        {"tcp:0.0.0.0:65535", {SerialKind::tcp, "", 0, "0.0.0.0", 65535}},
        {"tcp:[::1]:7042", {SerialKind::tcp, "", 0, "::1", 7042}},
        {"stdio", {SerialKind::stdio, "", 0, "", 0}},
    };
    for (const Case& one : cases) {
        SerialName name{};
        EXPECT_EQ(parse_serial_name(one.text, name), "");
        EXPECT_EQ(name.kind, one.name.kind) << one.text;
        EXPECT_EQ(name.path, one.name.path);
        EXPECT_EQ(name.baud, one.name.baud) << one.text;
        EXPECT_EQ(name.host, one.name.host);
        EXPECT_EQ(name.port, one.name.port) << one.text;
    }
    for (const char* text :
         {"", "pyt", "ttyUSB0", "pty:", "tcp", "tcp:", "tcp:x", "tcp:65536", "tcp:-1", "tcp: 1",
          "tcp::1", "tcp:example:1", "tcp:[::1:7042x", "/dev/ttyUSB0@", "/dev/ttyUSB0@0",
          "/dev/ttyUSB0@fast", "/dev/ttyUSB0@99999999999", "stdio:"}) {
        SerialName name{};
        EXPECT_TRUE(parse_serial_name(text, name).starts_with("serial line \"")) << text;
    }
}

TEST_F(SerialDevice, carries_every_byte_both_ways_at_any_speed) {
    const StandIn device;
    const int line = open_port(1, device.name);
    ASSERT_GT(line, 0) << serial_fault;
    EXPECT_EQ(serial_peer_name(1), device.name);
    for (const int baud : {300, 12345, 115200, 3000000})
        EXPECT_TRUE(real_serial_set_baud(line, baud)) << baud;
    EXPECT_FALSE(real_serial_set_baud(line, 0)) << "that would hang up";
    EXPECT_EQ(real_serial_cts(line), 0);
    peer_sends(device.master, all_bytes());
    EXPECT_TRUE(eventually([&] { return real_serial_queued_in(line) == 256; }));
    EXPECT_EQ(taken(line, 256), all_bytes());
    EXPECT_EQ(real_serial_queued_in(line), 0);
    EXPECT_EQ(real_serial_write(line, bytes_of(all_bytes())), 256);
    EXPECT_EQ(peer_takes(device.master, 256), all_bytes());
    real_serial_close(line);
}

TEST_F(SerialDevice, takes_no_more_than_fits_and_tells_when_there_is_room) {
    const StandIn device;
    const int line = open_port(1, device.name);
    const std::size_t all = fill(line);
    std::thread peer([&] { EXPECT_EQ(peer_takes(device.master, all).size(), all); });
    real_wait_for_line(line, LineEvent::output, 60'000);
    EXPECT_GT(real_serial_write(line, bytes_of("x")), 0);
    peer.join();
    real_serial_close(line);
}

TEST_F(SerialDevice, belongs_to_one_program_at_a_time) {
    const StandIn device;
    const int line = open_port(1, device.name);
    EXPECT_EQ(open_port(2, device.name), 0);
    EXPECT_EQ(serial_fault, device.name + ": another program has it open");
    real_serial_close(line);
    const int second = open_port(2, device.name);
    EXPECT_GT(second, 0) << serial_fault;
    real_serial_close(second);
}

TEST_F(SerialDevice, that_is_none_is_refused_with_the_reason) {
    std::ofstream(folder / "file") << "mine";
    struct Case {
        fs::path path;
        const char* reason;
    };
    for (const auto& [path, reason] :
         {Case{folder / "none", "No such file or directory"}, Case{folder, "Is a directory"},
          Case{folder / "file", "it is no serial device"}}) {
        EXPECT_EQ(open_port(1, path), 0);
        EXPECT_EQ(serial_fault, path.string() + ": " + reason);
    }
    EXPECT_EQ(fs::file_size(folder / "file"), 4U);
}

TEST_F(SerialDevice, that_vanishes_gives_faults_without_spinning_and_comes_back_by_itself) {
    const std::string path = folder / "tty";
    auto device = std::make_unique<StandIn>();
    fs::create_symlink(device->name, path);
    const int line = open_port(1, path);
    ASSERT_GT(line, 0) << serial_fault;
    fs::remove(path);
    std::thread unplug([&] { device.reset(); });
    real_wait_for_line(line, LineEvent::input, 60'000);
    unplug.join();
    const double cpu_before = cpu_seconds();
    for (const LineEvent event :
         {LineEvent::input, LineEvent::output, LineEvent::cts, LineEvent::idle}) {
        EXPECT_LT(real_serial_queued_in(line), 0);
        EXPECT_LT(real_serial_queued_out(line), 0);
        EXPECT_LT(real_serial_cts(line), 0);
        EXPECT_LT(real_serial_write(line, bytes_of("x")), 0);
        std::array<std::uint8_t, 1> byte{};
        EXPECT_LT(real_serial_read(line, byte), 0);
        EXPECT_FALSE(real_serial_set_baud(line, 9600));
        real_wait_for_line(line, event, 200);
    }
    EXPECT_LT(cpu_seconds() - cpu_before, 0.2) << "of 0.8 seconds";
    const StandIn again;
    fs::create_symlink(again.name, path);
    const auto back = std::chrono::steady_clock::now();
    while (real_serial_queued_in(line) < 0 && std::chrono::steady_clock::now() < back + long_limit)
        real_wait_for_line(line, LineEvent::input, 5);
    peer_sends(again.master, "here again");
    EXPECT_EQ(taken(line, 10), "here again");
    real_serial_close(line);
}

TEST_F(SerialPty, is_raw_and_empty_for_each_peer_and_loses_what_goes_out_to_none) {
    const int line = open_port(1, "pty");
    ASSERT_GT(line, 0) << serial_fault;
    const std::string terminal = serial_peer_name(1);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(real_serial_write(line, bytes_of(std::string(1000, 'l'))), 1000);
    const int first = open_terminal(terminal);
    EXPECT_EQ(real_serial_queued_out(line), 0);
    EXPECT_EQ(real_serial_write(line, bytes_of(all_bytes())), 256);
    EXPECT_EQ(peer_takes(first, 256), all_bytes());
    peer_sends(first, all_bytes());
    EXPECT_EQ(taken(line, 256), all_bytes());
    // It goes with bytes on the way in both directions: those for the module still arrive.
    peer_sends(first, "last words");
    // The system makes room once more behind our back.
    EXPECT_TRUE(eventually([&] { return fill(line) == 0 && real_serial_queued_out(line) > 4000; }));
    ::close(first);
    EXPECT_EQ(taken(line, 10), "last words");
    real_wait_for_line(line, LineEvent::input, 1);
    const int second = open_terminal(terminal);
    EXPECT_EQ(real_serial_queued_out(line), 0);
    EXPECT_EQ(real_serial_write(line, bytes_of("hello")), 5);
    EXPECT_EQ(peer_takes(second, 5), "hello");
    ::close(second);
    real_serial_close(line);
}

TEST_F(SerialPty, waits_for_a_peer_that_is_not_there_without_spinning) {
    const int line = open_port(1, "pty");
    const double cpu_before = cpu_seconds();
    real_wait_for_line(line, LineEvent::input, 500);
    EXPECT_LT(cpu_seconds() - cpu_before, 0.1);
    std::thread peer([name = serial_peer_name(1)] {
        const int fd = open_terminal(name);
        peer_sends(fd, "x");
        ::close(fd);
    });
    real_wait_for_line(line, LineEvent::input, 60'000);
    EXPECT_EQ(taken(line, 1), "x");
    peer.join();
    real_serial_close(line);
}

TEST_F(SerialPty, has_a_link_that_goes_with_the_port) {
    set_serial_folder(folder);
    const int line = open_port(3, "pty");
    ASSERT_GT(line, 0) << serial_fault;
    EXPECT_EQ(fs::read_symlink(folder / "COM3"), serial_peer_name(3));
    const int named = open_port(4, "pty:" + (folder / "line").string());
    EXPECT_EQ(fs::read_symlink(folder / "line"), serial_peer_name(4));
    // Who has put his own in its place keeps it.
    fs::remove(folder / "line");
    std::ofstream(folder / "line") << "mine";
    real_serial_close(named);
    EXPECT_TRUE(fs::is_regular_file(folder / "line"));
    real_serial_close(line);
    EXPECT_FALSE(fs::is_symlink(folder / "COM3"));
}

TEST_F(SerialPty, replaces_a_link_that_is_dead_and_nothing_else) {
    const fs::path link = folder / "COM1";
    set_serial_folder(folder);
    const auto refused = [&] {
        return open_port(1, "pty") == 0 &&
               serial_fault == link.string() + ": something of that name is there already";
    };
    std::ofstream(link) << "mine";
    EXPECT_TRUE(refused());
    EXPECT_EQ(fs::file_size(link), 4U);
    fs::remove(link);
    fs::create_symlink("nowhere", link);
    EXPECT_TRUE(refused());
    fs::remove(link);
    const StandIn other;
    fs::create_symlink(other.name, link);
    EXPECT_TRUE(refused()) << "another program's, and alive";
    fs::remove(link);
    // As a kill leaves it.
    fs::create_symlink("/dev/pts/987654", link);
    const int line = open_port(1, "pty");
    EXPECT_GT(line, 0) << serial_fault;
    real_serial_close(line);
    EXPECT_FALSE(fs::is_symlink(link));
}

TEST_F(SerialTcp, has_one_peer_at_a_time_and_peers_come_and_go) {
    const int line = open_port(1, "tcp:0");
    ASSERT_GT(line, 0) << serial_fault;
    EXPECT_EQ(real_serial_write(line, bytes_of("lost")), 4);
    for (int i = 0; i < 3; ++i) {
        const int peer = connect_to_line();
        peer_sends(peer, all_bytes());
        EXPECT_TRUE(eventually([&] { return real_serial_queued_in(line) == 256; }));
        const int second = connect_to_line();
        EXPECT_TRUE(eventually([&] {
            real_wait_for_line(line, LineEvent::idle, 10);
            char byte = 0;
            return ::read(second, &byte, 1) == 0;
        })) << "sent away";
        ::close(second);
        EXPECT_EQ(taken(line, 256), all_bytes());
        EXPECT_EQ(real_serial_write(line, bytes_of(all_bytes())), 256);
        EXPECT_EQ(peer_takes(peer, 256), all_bytes());
        ::close(peer);
    }
    real_serial_close(line);
}

TEST_F(SerialTcp, hears_out_who_has_gone_before_the_next_comes_in) {
    const int line = open_port(1, "tcp:0");
    for (const char* words : {"first", "other"}) {
        const int peer = connect_to_line();
        peer_sends(peer, words);
        ::close(peer);
    }
    EXPECT_TRUE(eventually([&] { return real_serial_queued_in(line) == 5; }));
    real_wait_for_line(line, LineEvent::idle, 50);
    EXPECT_EQ(taken(line, 10), "firstother");
    // One that has only ended its sending waits for its answer.
    const int half = connect_to_line();
    peer_sends(half, "question");
    shutdown(half, SHUT_WR);
    EXPECT_EQ(taken(line, 8), "question");
    const double cpu_before = cpu_seconds();
    real_wait_for_line(line, LineEvent::input, 200);
    EXPECT_LT(cpu_seconds() - cpu_before, 0.1);
    EXPECT_EQ(real_serial_write(line, bytes_of("answer")), 6);
    EXPECT_EQ(peer_takes(half, 6), "answer");
    const int next = connect_to_line();
    peer_sends(next, "x");
    EXPECT_EQ(taken(line, 1), "x");
    EXPECT_EQ(peer_takes(half, 1), "") << "the next peer has its place";
    ::close(half);
    ::close(next);
    real_serial_close(line);
}

TEST_F(SerialTcp, takes_an_urgent_byte_as_one_like_the_others) {
    const int line = open_port(1, "tcp:0");
    const int peer = connect_to_line();
    for (const char* words : {"before it is taken", "afterwards"}) {
        EXPECT_GT(send(peer, words, std::strlen(words), MSG_OOB), 0);
        peer_sends(peer, "!");
        EXPECT_EQ(taken(line, std::strlen(words) + 1), words + std::string{"!"});
    }
    ::close(peer);
    real_serial_close(line);
}

TEST_F(SerialTcp, tells_of_a_port_that_is_taken) {
    const int line = open_port(1, "tcp:0");
    const std::string address = serial_peer_name(1);
    EXPECT_EQ(open_port(2, "tcp:" + address), 0);
    EXPECT_TRUE(serial_fault.ends_with("Address already in use")) << serial_fault;
    real_serial_close(line);
}

TEST_F(SerialStdio, carries_both_streams_and_survives_their_ends) {
    std::array<int, 2> in{}, out{};
    ASSERT_EQ(pipe2(in.data(), O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(out.data(), O_CLOEXEC), 0);
    const int old_in = dup(0), old_out = dup(1);
    std::fflush(stdout);
    dup2(in[0], 0);
    dup2(out[1], 1);
    const int line = open_port(1, "stdio");
    dup2(old_in, 0);
    dup2(old_out, 1);
    for (const int fd : {old_in, old_out, in[0], out[1]})
        ::close(fd);
    ASSERT_GT(line, 0) << serial_fault;
    peer_sends(in[1], all_bytes());
    EXPECT_EQ(taken(line, 256), all_bytes());
    EXPECT_EQ(real_serial_write(line, bytes_of("answer")), 6);
    EXPECT_EQ(real_serial_queued_out(line), 6);
    EXPECT_EQ(peer_takes(out[0], 6), "answer");
    fill(line);
    peer_sends(in[1], "last");
    ::close(in[1]);
    EXPECT_EQ(taken(line, 4), "last");
    const double cpu_before = cpu_seconds();
    real_wait_for_line(line, LineEvent::input, 200);
    EXPECT_LT(cpu_seconds() - cpu_before, 0.1);
    ::close(out[0]);
    const auto handler = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(real_serial_write(line, bytes_of("lost")), 4);
    std::signal(SIGPIPE, handler);
    real_serial_close(line);
}

TEST_F(SerialStdio, takes_an_urgent_byte_of_a_socket_as_one_like_the_others) {
    // As a program has it that an internet daemon starts: its standard input is a connection.
    const int door = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    ASSERT_EQ(bind(door, reinterpret_cast<sockaddr*>(&place), size), 0);
    ASSERT_EQ(listen(door, 1), 0);
    ASSERT_EQ(getsockname(door, reinterpret_cast<sockaddr*>(&place), &size), 0);
    const int peer = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&place), size), 0);
    const int connection = accept4(door, nullptr, nullptr, SOCK_CLOEXEC);
    const int old_in = dup(0);
    dup2(connection, 0);
    const int line = open_port(1, "stdio");
    dup2(old_in, 0);
    EXPECT_EQ(send(peer, "urgent", 6, MSG_OOB), 6);
    EXPECT_EQ(taken(line, 6), "urgent");
    for (const int fd : {door, peer, connection, old_in})
        ::close(fd);
    real_serial_close(line);
}

TEST_F(SerialLine, without_rts_makes_the_peer_wait_all_the_same) {
    const StandIn device;  // without modem lines
    for (const std::string& kind : {std::string{"pty"}, std::string{"tcp:0"}, device.name}) {
        const int line = open_port(1, kind);
        const int peer = kind == "pty"     ? open_terminal(serial_peer_name(1))
                         : kind == "tcp:0" ? connect_to_line()
                                           : dup(device.master);
        real_serial_set_rts(line, false);
        const std::string much(8'000'000, 'm');
        const ssize_t sent = ::write(peer, much.data(), much.size());
        EXPECT_GT(sent, 0);
        EXPECT_LT(sent, 8'000'000) << kind;
        EXPECT_EQ(real_serial_queued_in(line), 0);
        const double cpu_before = cpu_seconds();
        real_wait_for_line(line, LineEvent::input, 100);
        EXPECT_LT(cpu_seconds() - cpu_before, 0.05) << kind;
        real_serial_set_rts(line, true);
        EXPECT_EQ(taken(line, static_cast<std::size_t>(sent)).size(),
                  static_cast<std::size_t>(sent));
        ::close(peer);
        real_serial_close(line);
    }
}

TEST_F(SerialLine, a_wait_ends_by_input_by_a_wake_and_by_its_time) {
    const int line = open_port(1, "pty");
    const int peer = open_terminal(serial_peer_name(1));
    const auto begin = std::chrono::steady_clock::now();
    real_wake_link();
    real_wake_link();
    real_wait_for_line(line, LineEvent::input, 60'000);
    for (int i = 0; i < 200; ++i) {
        std::thread waker(real_wake_link);
        real_wait_for_line(line, LineEvent::input, 60'000);
        waker.join();
    }
    for (int i = 0; i < 200; ++i) {
        std::thread sender([peer] { peer_sends(peer, "x"); });
        real_wait_for_line(line, LineEvent::input, 60'000);
        sender.join();
        EXPECT_EQ(taken(line, 1), "x");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, long_limit);
    const auto before_wait = std::chrono::steady_clock::now();
    real_wait_for_line(line, LineEvent::input, 30);
    real_wait_for_line(0, LineEvent::idle, 30);
    EXPECT_GE(std::chrono::steady_clock::now() - before_wait, std::chrono::milliseconds{60});
    ::close(peer);
    real_serial_close(line);
}

TEST_F(SerialLine, without_a_descriptor_left_fails_and_leaks_none) {
    const StandIn device;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const int used = open_descriptors();
    for (const std::string& kind :
         {device.name, std::string{"pty"}, std::string{"tcp:0"}, std::string{"stdio"}}) {
        for (rlim_t spare = 0; spare < 2; ++spare) {
            // The listing that counts has taken one itself.
            const rlimit few{static_cast<rlim_t>(used - 1) + spare, limit.rlim_max};
            setrlimit(RLIMIT_NOFILE, &few);
            const int line = open_port(1, kind);
            setrlimit(RLIMIT_NOFILE, &limit);
            if (line > 0) real_serial_close(line);
            EXPECT_TRUE(line > 0 || serial_fault.ends_with("Too many open files")) << serial_fault;
            EXPECT_EQ(open_descriptors(), used) << kind;
        }
    }
}

TEST_F(SerialLine, is_handed_over_a_thousand_times_under_traffic) {
    set_serial_folder(folder);
    const StandIn device;
    set_serial_device(1, "pty");
    set_serial_device(2, "tcp:0");
    set_serial_device(3, device.name);
    std::atomic<int> handed{0};  // the slot: a line for the thread that uses it, -1 to end
    std::atomic<long> moved{0};
    std::thread link([&] {
        const std::vector<std::uint8_t> block(100, 'x');
        std::array<std::uint8_t, 4000> into{};
        for (int line = 0; line >= 0;) {
            if (const int next = handed.exchange(0); next != 0) {
                if (line > 0) real_serial_close(line);
                line = next;
            }
            if (line <= 0) {
                real_wait_for_line(0, LineEvent::idle, 1000);
                continue;
            }
            if (real_serial_queued_in(line) > 0) moved += real_serial_read(line, into);
            moved += std::max(real_serial_write(line, block), 0);
            real_serial_set_rts(line, real_serial_cts(line) == 0);
            real_serial_set_baud(line, 9600);
            real_wait_for_line(line, LineEvent::input, 1);
        }
    });
    for (int i = 0; i < 1000; ++i) {
        // One port in three is chosen again while it may still be open.
        const int line = real_serial_open(i / 3 % 3 + 1, 9600);
        EXPECT_GT(line, 0) << serial_fault;
        if (const int unused = handed.exchange(line); unused > 0) real_serial_close(unused);
        real_wake_link();
        char bytes[100]{};
        while (::read(device.master, bytes, sizeof bytes) > 0) {
        }
        peer_sends(device.master, "x");
    }
    eventually([&] { return handed.load() == 0 && moved.load() > 0; });
    handed.store(-1);
    real_wake_link();
    link.join();
    EXPECT_FALSE(fs::is_symlink(folder / "COM1"));
}

}  // namespace orvanel
