// The port and plain bytes: what is asked of the line, waits and their limits.

#include "tests/link/roof/line_support.h"

#include <algorithm>

namespace orvanel {
namespace {

class ComPort : public OnLine {
  protected:
    void SetUp() override {
        protocol_on = false;
        OnLine::SetUp();
    }

    /// Waits for the line take time, as on link_thread.
    static void in_real_time() { line_waits = true; }
};

TEST_F(ComPort, plain_bytes_go_both_ways_and_end_the_automatic_macro) {
    tx_pipe_put_block(bytes("answer"));
    auto_macro_mode = 1;
    EXPECT_EQ(answer_to({}), bytes("answer"));
    EXPECT_EQ(auto_macro_mode, 1);
    answer_to(bytes("to you"));
    EXPECT_EQ(delivered(), bytes("to you"));
    EXPECT_EQ(auto_macro_mode, 0);
}

TEST_F(ComPort, a_turn_moves_4000_bytes_each_way) {
    receive(Bytes(4001, 'x'));
    tx_pipe_put_block(Bytes(4001, 'y'));
    link_turn();
    EXPECT_EQ(rx_count(), 4000);
    EXPECT_EQ(fake_line.out.size(), 4000u);
    link_turn();
    EXPECT_EQ(rx_count(), 4001);
    EXPECT_EQ(fake_line.out.size(), 4001u);
}

TEST_F(ComPort, answers_wait_for_cts_and_for_a_queue_that_is_not_full) {
    tx_pipe_put_block(bytes("answer"));
    for (const int cts : {1, -1}) {
        fake_line.cts = cts;
        EXPECT_EQ(answer_to({}), silence);
    }
    fake_line.cts = 0;
    fake_line.queued_out = 4001;
    EXPECT_EQ(answer_to({}), silence);
    EXPECT_EQ(tx_count(), 6);
    fake_line.queued_out = 4000;
    EXPECT_EQ(answer_to({}), bytes("answer"));
    tx_pipe_put_block(bytes("answer"));
    fake_line.queued_out = -1;
    EXPECT_EQ(answer_to({}), bytes("answer")) << "a fault counts as room";
}

TEST_F(ComPort, rts_goes_off_above_the_high_mark_and_comes_back_below_the_low_one) {
    rx_pipe_put_block(Bytes(high_mark - 1));
    answer_to({'x'});
    EXPECT_TRUE(fake_line.rts) << "exactly at the mark";
    answer_to({'x'});
    EXPECT_FALSE(fake_line.rts);
    while (rx_count() >= low_mark)
        rx_pipe_get();
    link_turn();
    EXPECT_TRUE(fake_line.rts);
}

TEST_F(ComPort, a_speed_of_the_module_lasts_until_its_reset) {
    com_set_baud(1200);
    link_turn();
    EXPECT_EQ(fake_line.baud, 1200);
    EXPECT_EQ(com_baud, 9600);
    com_select(1, 19200);
    link_turn();
    EXPECT_EQ(fake_line.baud, 19200) << "a new setting holds at once";
    com_set_baud(1200);
    com_select(2, 300);
    link_turn();
    EXPECT_EQ(fake_line.baud, 19200) << "a new port has the stored speed, not the one beside it";
    com_set_baud(1200);
    com_select(0, 19200);
    com_select(0, 38400);
    com_select(1, 19200);
    link_turn();
    EXPECT_EQ(fake_line.baud, 38400) << "chosen while no port was open";
}

TEST_F(ComPort, a_port_that_cannot_be_opened_is_told_once_and_none_is_chosen) {
    fake_line.absent = true;
    fake_line.on_wake = serve_line_words;
    com_select(2, 9600);
    EXPECT_EQ(com_port, 0);
    EXPECT_EQ(fake_platform.messages, std::vector<std::string>{"cannot open COM2 !"});
    EXPECT_EQ(fake_line.held_port, 0) << "the former port is given back all the same";
    receive({'x'});
    link_turn();
    EXPECT_EQ(rx_count(), 0);
    fake_line.absent = false;
    com_select(2, 9600);
    EXPECT_EQ(fake_line.held_port, 2);
}

TEST_F(ComPort, a_change_of_port_closes_the_former_one_and_drops_what_it_held) {
    receive({'x'});
    com_set_baud(1200);
    link_turn();
    rx_pipe_get();
    receive({'x'});
    com_rts_off();
    com_select(2, 9600);
    EXPECT_EQ(fake_line.closings, 0) << "link_thread does that";
    link_turn();
    EXPECT_EQ(fake_line.closings, 1);
    EXPECT_EQ(rx_count(), 0);
    EXPECT_TRUE(fake_line.rts) << "what was asked of the former port is over";
    com_select(3, 9600);
    com_select(4, 9600);
    EXPECT_EQ(fake_line.closings, 2) << "a line that nobody has taken is closed by its opener";
    com_select(0, 9600);
    link_turn();
    EXPECT_EQ(fake_line.closings, 4);
    EXPECT_EQ(fake_line.openings, 4);
    EXPECT_FALSE(line_is_open());
}

TEST_F(ComPort, a_device_that_is_taken_by_the_former_port_is_given_back_first) {
    fake_line.one_device = true;
    fake_line.on_wake = serve_line_words;
    com_select(2, 9600);
    EXPECT_EQ(com_port, 2);
    EXPECT_EQ(fake_line.held_port, 2);
    EXPECT_TRUE(fake_platform.messages.empty());
}

TEST_F(ComPort, faults_read_nothing_and_pass) {
    receive({'x'});
    fake_line.line_error = true;
    EXPECT_EQ(link_turn(), TurnWait::fault);
    EXPECT_EQ(rx_count(), 0);
    link_turn();
    EXPECT_EQ(rx_count(), 1) << "a line error costs one turn";
    fake_line.faulty = true;
    receive({'y'});
    tx_pipe_put('z');
    EXPECT_EQ(link_turn(), TurnWait::fault);
    fake_line.faulty = false;
    EXPECT_EQ(answer_to({}), Bytes{'z'});
    EXPECT_EQ(rx_count(), 2);
}

TEST_F(ComPort, a_write_waits_three_seconds_for_cts) {
    in_real_time();
    const Bytes data{'a', 'b'};
    fake_line.cts = 1;
    const std::int64_t start = fake_line.now_ms;
    EXPECT_FALSE(com_write(data));
    EXPECT_EQ(fake_line.now_ms - start, 3010) << "one change above the limit";
    EXPECT_EQ(fake_line.waited_for, LineEvent::cts);
    fake_line.on_wait = [] {
        if (fake_line.now_ms % 6010 == 0) fake_line.cts = 0;
    };
    EXPECT_TRUE(com_write(data)) << "the last look counts";
    EXPECT_EQ(sent(), data);
    fake_line.on_wait = nullptr;
    fake_line.cts = -1;
    EXPECT_FALSE(com_write(data)) << "a fault counts as off";
}

TEST_F(ComPort, a_plain_block_is_lost_where_cts_stays_off) {
    in_real_time();
    fake_line.on_write = [] { fake_line.cts = fake_line.out.size() >= 16 ? 1 : 0; };
    tx_pipe_put_block(Bytes(20, 'x'));
    link_turn();
    EXPECT_EQ(sent().size(), 16u);
    EXPECT_EQ(tx_count(), 0);
    EXPECT_FALSE(line_is_full());
}

TEST_F(ComPort, a_full_device_keeps_what_it_has_no_room_for) {
    in_real_time();
    fake_line.room = 10;
    tx_pipe_put_block(bytes("0123456789abcdef"));
    receive({'x'});
    EXPECT_EQ(link_turn(), TurnWait::pause);
    EXPECT_EQ(link_turn(), TurnWait::output);
    EXPECT_EQ(rx_count(), 1) << "reading goes on";
    EXPECT_EQ(sent(), bytes("0123456789"));
    fake_line.room = 4;
    fake_line.cts = 1;
    EXPECT_EQ(link_turn(), TurnWait::change) << "a device with room is no end of the wait";
    fake_line.cts = 0;
    choose_protocol(true);
    link_turn();
    fake_line.on_wait = [] { fake_line.room = 1; };
    EXPECT_EQ(answer_to(control_frame({'?'})), joined({bytes("abcdef"), ack}));
}

TEST_F(ComPort, a_device_that_takes_nothing_costs_a_write_three_seconds) {
    in_real_time();
    fake_line.room = 3;
    const Bytes data(5, 'x');
    EXPECT_FALSE(com_write(data));
    EXPECT_EQ(fake_line.now_ms, 3010);
    EXPECT_EQ(sent().size(), 3u);
    // One that takes a byte every two seconds has them all.
    fake_line.on_wait = [] { fake_line.room = fake_line.now_ms % 2000 == 0 ? 1 : 0; };
    EXPECT_TRUE(com_write(data));
    EXPECT_EQ(sent(), data);
}

TEST_F(ComPort, a_change_of_port_and_the_end_break_off_a_wait) {
    in_real_time();
    fake_line.cts = 1;
    fake_line.on_wait = [] { com_select(2, 9600); };
    EXPECT_FALSE(com_write(Bytes{'x'}));
    EXPECT_EQ(fake_line.waits, 1);
    fake_line.on_wait = nullptr;
    link_turn();
    fake_line.waits = 0;
    fake_line.on_wait = [] { shutdown_requested = true; };
    EXPECT_FALSE(com_write(Bytes{'x'}));
    EXPECT_EQ(fake_line.waits, 1);
}

TEST_F(ComPort, the_last_bytes_get_200_ms_and_no_more) {
    in_real_time();
    fake_line.queued_out = 1;
    com_select(0, 9600);
    link_turn();
    EXPECT_EQ(fake_line.now_ms, 200);
    EXPECT_EQ(fake_line.closings, 1);

    com_select(1, 9600);
    link_turn();
    fake_line.on_wait = [] { fake_line.queued_out = 0; };
    com_select(0, 9600);
    link_turn();
    EXPECT_EQ(fake_line.now_ms, 200 + 10 + 67) << "64 bytes may stand behind the queue";
}

TEST_F(ComPort, the_rest_of_a_block_leaves_before_the_line_is_closed) {
    in_real_time();
    fake_line.room = 2;
    tx_pipe_put_block(bytes("abcd"));
    link_turn();
    fake_line.on_wait = [] { fake_line.room = 1; };
    com_select(0, 9600);
    link_turn();
    EXPECT_EQ(sent(), bytes("abcd"));
}

TEST_F(ComPort, after_a_turn_it_says_what_there_is_to_wait_for) {
    EXPECT_EQ(link_turn(), TurnWait::input);
    receive({'x'});
    EXPECT_EQ(link_turn(), TurnWait::pause) << "more bytes may be on their way";
    receive(Bytes(1000));
    EXPECT_EQ(link_turn(), TurnWait::none);
    tx_pipe_put_block(Bytes(5000));
    EXPECT_EQ(link_turn(), TurnWait::none);
    EXPECT_EQ(link_turn(), TurnWait::input);
    fake_line.cts = 1;
    tx_pipe_put('x');
    EXPECT_EQ(link_turn(), TurnWait::change);
    protocol_on = true;
    EXPECT_EQ(link_turn(), TurnWait::input);
    receive({0x11});
    EXPECT_EQ(link_turn(), TurnWait::pause) << "amid a frame";
    EXPECT_EQ(link_turn(), TurnWait::input);
    com_rts_off();
    EXPECT_EQ(link_turn(), TurnWait::change);
    com_select(0, 9600);
    EXPECT_EQ(link_turn(), TurnWait::wake);
}

}  // namespace
}  // namespace orvanel
