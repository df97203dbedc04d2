// source.h: the lines of a kit source, those of its includes in their places, and taking one line
// apart.

#pragma once

#include "kit/fault.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

struct SourceLine {
    std::string file;
    int number;  // from 1
    std::string text;
};

/// The lines of the file, each `include` replaced by the lines of the file it names. One that can't
/// be read, or includes itself, is a fault. Throws a Fault if `path` itself can't be read.
std::vector<SourceLine> read_source(const std::string& path, Faults& faults);

/// The same from memory; `name` stands in messages, and its folder is where includes start from.
std::vector<SourceLine> lines_of(const std::string& name, std::string_view text, Faults& faults);

/// `path` as seen from the folder of the file that names it.
std::string path_beside(const std::string& file, std::string_view path);

/// A place in a line that moves on as words are taken. Borrows the line.
struct Scanner {
    const SourceLine* line;
    std::size_t at;  // bytes
};

/// Where the scanner stands, for messages.
Place place_of(const Scanner& scanner);

/// Throws a Fault where the scanner stands.
[[noreturn]] void fail(const Scanner& scanner, const std::string& what);

void skip_blanks(Scanner& scanner);

/// The next character after blanks, which are skipped; 0 at the end of the line or its comment.
char peek(Scanner& scanner);

/// Takes `c` if it comes next after blanks.
bool take_char(Scanner& scanner, char c);

/// Takes `c`, or throws that it is expected.
void expect_char(Scanner& scanner, char c);

/// Throws unless only blanks and a comment are left.
void expect_end(Scanner& scanner);

/// Letters, digits and _, not beginning with a digit; empty if none comes next.
std::string_view take_name(Scanner& scanner);

/// Up to the next blank, comment or one of `ends`; empty if there is none.
std::string_view take_word(Scanner& scanner, std::string_view ends = {});

/// What stands between double quotes, or a word. Throws if there is neither.
std::string take_path(Scanner& scanner);

/// A decimal number, or a hexadecimal one after $ or 0x. Throws unless it lies in min..max.
int take_number(Scanner& scanner, int min, int max);

/// As take_number, from a command line: the whole text. False if it is no such number.
bool number_of(std::string_view text, int min, int max, int& value);

/// For each byte that lines gave the column where it was written, in characters from 1.
struct Columns {
    std::vector<int> list;
    // The place in the line that was counted last.
    std::size_t at = 0;
    int column = 1;
};

/// The bytes up to `size` were written where the scanner stands, which moves on through its line.
void note_column(Columns& columns, const Scanner& scanner, std::size_t size);

/// A text in double quotes, turned to the module's code page. \\ \" \n \r \t \e \xHH are escapes;
/// \| \~ \@ stay as they are, since the module reads them so. Appends to `columns`.
Bytes take_text(Scanner& scanner, Columns* columns = nullptr);

/// Pairs of hexadecimal digits and texts up to the end of the line.
Bytes take_bytes(Scanner& scanner, Columns* columns = nullptr);

}  // namespace orvanel
