// The framed protocol, byte by byte, with the test as the peer.

#include "firmware/store/roof/timers.h"
#include "tests/link/roof/line_support.h"

#include <algorithm>

namespace orvanel {
namespace {

class Pactlink : public OnLine {
  protected:
    void SetUp() override {
        protocol_on = true;
        OnLine::SetUp();
        tick_enabled = true;
    }

    static Bytes ask(const Bytes& payload) { return answer_to(control_frame(payload)); }

    static void ticks(int n) {
        for (; n > 0; --n)
            firmware_tick();
    }
};

Bytes fetched(const Bytes& payload) { return joined({ack, data_frame(payload)}); }

TEST_F(Pactlink, whole_frames_as_a_peer_would_write_them_down) {
    EXPECT_EQ(answer_to({0x11, 0x02, 'A', 'B', 0x96}), ack);
    EXPECT_EQ(delivered(), (Bytes{'A', 'B'}));
    EXPECT_EQ(answer_to({0x12, 0x01, 'I', 0x5C}), (Bytes{0x06, 0x12, 0x02, 0, 250, 0x0E}));
    EXPECT_EQ(answer_to({0x12, 0x03, 'A', 'D', 7, 0xA1}), ack);
    EXPECT_EQ(answer_to({0x12, 0x01, 'I', 0x5C}), silence) << "not selected any more";
    EXPECT_EQ(answer_to({0x12, 0x03, 'A', 'S', 7, 0xB0}), ack);
    EXPECT_EQ(answer_to({0x12, 0x01, 'S', 0x66}), (Bytes{0x06, 0x11, 0x00, 0x11}));
}

TEST_F(Pactlink, selecting_one_module_deselects_the_others) {
    struct Case {
        bool before;
        char choice;
        std::uint8_t address;
        bool after, answered;
    };
    for (const auto [before, choice, address, after, answered] :
         {Case{false, 'D', 7, false, true}, Case{true, 'D', 7, false, true},
          Case{false, 'S', 7, true, true}, Case{true, 'S', 7, true, true},
          Case{false, 'D', 8, false, false}, Case{false, 'S', 8, false, false},
          Case{true, 'D', 8, true, false}, Case{true, 'S', 8, false, false},
          Case{true, 's', 7, true, false}, Case{false, 'x', 7, false, false}}) {
        module_selected = before;
        for (const char command : {'A', 'a'}) {
            EXPECT_EQ(ask({static_cast<std::uint8_t>(command), static_cast<std::uint8_t>(choice),
                           address}),
                      answered ? ack : silence)
                << before << choice << int{address};
            EXPECT_EQ(module_selected, after) << before << choice << int{address};
        }
    }
}

TEST_F(Pactlink, another_address_than_7_waits_to_be_selected) {
    configured_address = 3;
    power_on_link();
    EXPECT_EQ(ask({'I'}), silence);
    EXPECT_EQ(answer_to({0x11, 1, 'x', 0}), silence) << "not even a NAK";
    EXPECT_EQ(ask({'A', 'S', 3}), ack);
    EXPECT_EQ(ask({'I'}).size(), 6u);
}

TEST_F(Pactlink, junk_vanishes_and_a_start_byte_in_it_costs_a_frame) {
    EXPECT_EQ(answer_to(joined({{0x00, 0x06, 0xFF}, control_frame({'P'})})),
              (Bytes{0x06, 0x12, 0x03, 0x40, 0x40, 200, 0x5D}));
    // The false frame swallows the true one's head, and its sum is wrong.
    EXPECT_EQ(answer_to(joined({{0x11, 1}, control_frame({'P'})})), nak);
    EXPECT_EQ(ask({'P'}).front(), 0x06);
}

TEST_F(Pactlink, wrong_sums_draw_a_nak_and_leave_no_trace) {
    auto_macro_mode = 1;
    for (Bytes spoilt : {data_frame({'A', 'B'}), control_frame({'D', 1, 2})}) {
        ++spoilt.back();
        EXPECT_EQ(answer_to(spoilt), nak);
    }
    EXPECT_EQ(delivered(), silence);
    EXPECT_EQ(packet_size, 64);
    EXPECT_EQ(auto_macro_mode, 1);
}

TEST_F(Pactlink, a_data_frame_ends_the_automatic_macro_unless_it_is_empty) {
    auto_macro_mode = 1;
    EXPECT_EQ(answer_to(data_frame({})), ack);
    EXPECT_EQ(ask({}), ack) << "an empty control frame";
    EXPECT_EQ(auto_macro_mode, 1);
    EXPECT_EQ(answer_to(data_frame({'A'})), ack);
    EXPECT_EQ(auto_macro_mode, 0);
}

TEST_F(Pactlink, a_data_frame_that_does_not_fit_whole_is_refused) {
    rx_pipe_put_block(Bytes(79900));
    auto_macro_mode = 1;
    EXPECT_EQ(answer_to(data_frame(Bytes(101, 'x'))), nak);
    EXPECT_EQ(rx_count(), 79900);
    EXPECT_EQ(auto_macro_mode, 1);
    EXPECT_EQ(answer_to(data_frame(Bytes(100, 'x'))), ack);
    EXPECT_EQ(rx_count(), 80000);
    EXPECT_EQ(ask({'I'}), (Bytes{0x06, 0x12, 0x02, 0, 0, 0x14}));
}

TEST_F(Pactlink, the_packet_size_limits_answers_alone) {
    EXPECT_EQ(answer_to(data_frame(Bytes(255, 'x'))), ack);
    EXPECT_EQ(rx_count(), 255);
    tx_pipe_put_block(bytes("12345"));
    EXPECT_EQ(ask({'D', 2, 50}), ack);
    EXPECT_EQ(ask({'S'}), fetched({'1', '2'}));
    EXPECT_EQ(ask({'D', 0, 50}), ack);
    EXPECT_EQ(ask({'S'}), fetched({}));
    EXPECT_EQ(ask({'D', 200, 0}), ack);
    EXPECT_EQ(ask({'P'}), joined({ack, control_frame({0x40, 64, 0})}));
    EXPECT_EQ(ask({'s'}), fetched({'3', '4', '5'}));
    tx_pipe_put_block(Bytes(1000, 'y'));
    EXPECT_EQ(ask({'I'})[3], 128) << "no true count";
    EXPECT_EQ(ask({'S'}).size(), 1 + 64 + 3u);
    EXPECT_EQ(tx_count(), 1000 - 64);
}

TEST_F(Pactlink, the_last_answer_comes_again_whatever_came_between) {
    EXPECT_EQ(ask({'R'}), (Bytes{0x06, 0, 0, 0})) << "none was built yet";
    tx_pipe_put_block(bytes("abc"));
    const Bytes answer = ask({'S'});
    EXPECT_EQ(ask({'R'}), answer);
    Bytes spoilt = control_frame({'S'});
    ++spoilt.back();
    EXPECT_EQ(answer_to(spoilt), nak);
    EXPECT_EQ(answer_to(data_frame({'x'})), ack);
    EXPECT_EQ(ask({'?'}), ack) << "an unknown command";
    power_on_link();
    power_on_pipes();
    EXPECT_EQ(ask({'r'}), answer);
    const Bytes parameters = ask({'P'});
    EXPECT_EQ(ask({'R'}), parameters);
}

TEST_F(Pactlink, short_commands_change_nothing) {
    ask({'D', 9, 9});
    EXPECT_EQ(ask({'D', 5}), ack);
    EXPECT_EQ(ask({'D'}), ack);
    EXPECT_EQ(packet_size, 9);
    EXPECT_EQ(frame_timeout_reload, 9);
    ask({'A', 'S', 7});
    EXPECT_EQ(ask({'A', 'D'}), silence) << "though a 7 stands where the address would";
    EXPECT_EQ(ask({'A'}), silence);
    EXPECT_TRUE(module_selected);
}

TEST_F(Pactlink, a_frame_that_stalls_is_dropped_after_its_time) {
    const Bytes whole = data_frame({'A', 'B'});
    for (std::size_t cut = 1; cut < whole.size(); ++cut) {
        const Bytes head(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
        const Bytes tail(whole.begin() + static_cast<std::ptrdiff_t>(cut), whole.end());
        ask({'D', 64, 35});
        answer_to(head);
        ticks(3);
        EXPECT_EQ(answer_to(tail), ack) << cut;
        answer_to(head);
        ticks(4);
        EXPECT_EQ(frame_progress.load().frame_state, FrameState::start);
        EXPECT_EQ(answer_to(tail), silence) << cut;
    }
    for (const std::uint8_t byte : whole) {
        ticks(3);
        EXPECT_EQ(answer_to({byte}), byte == whole.back() ? ack : silence)
            << "each byte has its time";
    }
    delivered();
    ask({'D', 64, 0});
    answer_to({0x11, 2, 'A'});
    ticks(1000);
    EXPECT_EQ(answer_to({'B', 0x96}), ack) << "a limit of 0 never runs out";
    EXPECT_EQ(delivered(), (Bytes{'A', 'B'}));
}

TEST_F(Pactlink, an_answered_frame_stops_its_limit_and_a_dropped_one_does_not) {
    answer_to(data_frame({'A'}));
    EXPECT_EQ(frame_progress.load().frame_timeout, 0);
    module_selected = false;
    answer_to(data_frame({'A'}));
    EXPECT_EQ(frame_progress.load().frame_timeout, 200);
    answer_to({0x12, 3});
    ticks(19);
    EXPECT_EQ(answer_to({'A', 'S', 7, 0xB0}), ack) << "the next frame has its own";
}

TEST_F(Pactlink, a_reset_drops_the_frame_that_comes_in_and_a_change_of_port_does_not) {
    answer_to({0x11, 2, 'A'});
    com_select(2, 9600);
    link_turn();
    EXPECT_EQ(answer_to({'B', 0x96}), ack);
    answer_to({0x11, 2, 'A'});
    power_on_link();
    EXPECT_EQ(answer_to({'B', 0x96}), silence);
}

TEST_F(Pactlink, a_turn_reads_the_bytes_of_one_answer_and_finds_all_frames_in_them) {
    Bytes many;
    for (int i = 0; i < 20; ++i)
        many = joined({many, control_frame({'?'})});
    receive(many);
    EXPECT_EQ(link_turn(), TurnWait::none);
    EXPECT_EQ(fake_line.in.size(), many.size() - 67);
    EXPECT_EQ(sent(), Bytes(16, 0x06));
    EXPECT_EQ(answer_to({}), Bytes(4, 0x06));
}

TEST_F(Pactlink, without_cts_answers_are_lost_and_frames_are_not) {
    fake_line.cts = 1;
    EXPECT_EQ(answer_to(data_frame({'A'})), silence);
    EXPECT_EQ(delivered(), Bytes{'A'});
    tx_pipe_put_block(bytes("abc"));
    EXPECT_EQ(ask({'S'}), silence);
    fake_line.cts = 0;
    EXPECT_EQ(ask({'R'}), fetched({'a', 'b', 'c'}));
}

TEST_F(Pactlink, answers_wait_for_the_peer_and_plain_bytes_do_not) {
    int wakes = 0;
    fake_line.on_wake = [&wakes] { ++wakes; };
    tx_pipe_put_block(bytes("ab"));
    EXPECT_EQ(answer_to({}), silence);
    EXPECT_EQ(wakes, 0);
    answer_to({0x11, 2, 'A'});
    choose_protocol(false);
    EXPECT_EQ(wakes, 1);
    tx_pipe_put('c');
    EXPECT_EQ(wakes, 2);
    fake_line.on_wake = nullptr;
    EXPECT_EQ(answer_to({'x'}), (Bytes{'a', 'b', 'c'}));
    EXPECT_EQ(delivered(), Bytes{'x'});
    choose_protocol(true);
    EXPECT_EQ(answer_to({'B', 0x96}), ack) << "the frame has waited";
}

TEST_F(Pactlink, counts_frames_whether_or_not_it_is_selected) {
    const auto good = frames_good.load(), bad = frames_bad.load();
    const auto in = line_bytes_in.load(), out = line_bytes_out.load();
    module_selected = false;
    ask({'I'});
    answer_to({0x11, 0, 0});
    ask({'A', 'S', 7});
    answer_to({0x11, 0, 0});
    EXPECT_EQ(frames_good - good, 2u);
    EXPECT_EQ(frames_bad - bad, 2u);
    EXPECT_EQ(line_bytes_in - in, 4 + 3 + 6 + 3u);
    EXPECT_EQ(line_bytes_out - out, 2u);
}

}  // namespace
}  // namespace orvanel
