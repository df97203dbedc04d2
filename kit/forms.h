// forms.h: how a kit writes each command of the module's language, and how it stands in a stream.
// All of it is made of the language's table.

#pragma once

#include "firmware/core/language/commands.h"
#include "kit/names.h"

#include <array>
#include <optional>
#include <span>
#include <string>

namespace orvanel {

struct Param {
    const char* name;
    Kind kind;  // whose names may stand for it
};

/// What comes after the numbers, as raw bytes under both lead-ins.
enum class Tail : std::uint8_t {
    none,
    string,   // up to 0, LF or CR
    picture,  // width, height, rows
    byte,     // one byte
    counted,  // a parameter, and so many bytes
    eeprom,   // address and length of two bytes each, a letter, and after W the data
};

constexpr int max_params = 9;

/// One command. `op` is 0 for a command without an op letter; `name` is null after the last
/// parameter.
struct Form {
    char group;
    char op;
    Tail tail;
    std::array<Param, max_params> params;
    const CommandRow* row;
};

/// Null if there is no such command. Letters are upper-case.
const Form* find_form(char group, char op);

/// The op letters of a group, empty if it has none.
std::string ops_of(char group);

/// All commands.
std::span<const Form> all_forms();

int param_count(const Form& form);

/// `ESC G D`, for messages.
std::string letters_of(const Form& form);

/// A command as it stands in a stream.
struct Parsed {
    const Form* form;  // null: no command, but bytes that the module takes after a lead-in
    std::array<int, max_params> params;
    std::size_t tail_at, tail_size;  // the raw bytes, without what ends or counts them
    std::size_t size;                // bytes of the whole
    int address, length;             // of Tail::eeprom, whose letter is `operation`
    char operation;
};

/// Reads the command at the start of `bytes`, which begin with a lead-in, as the module does.
/// Nothing if they end within it.
std::optional<Parsed> parse_command(std::span<const std::uint8_t> bytes);

/// Bytes of a picture in the stream, two for its size included; -1 if the two aren't there.
int streamed_picture_size(std::span<const std::uint8_t> bytes);

}  // namespace orvanel
