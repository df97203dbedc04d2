#include "kit/names.h"

#include "base/nearest.h"
#include "base/quoting.h"

#include <array>
#include <cstddef>

namespace orvanel {

namespace {

constexpr std::array<std::string_view, store_tables.size()> kind_names{
    "number", "font", "picture", "power-on macro", "normal macro", "touch macro", "menu macro"};

constexpr int max_number = 1'000'000;  // of a number in a sum

/// A term of a sum.
int take_term(Scanner& scanner, const Names& names, Kind wanted, std::string_view what) {
    peek(scanner);
    const Scanner start = scanner;
    const std::string_view name = take_name(scanner);
    if (name.empty()) {
        const char c = peek(scanner);
        if (c != '$' && (c < '0' || c > '9'))
            fail(start, "expected " + std::string(what) + ", a number or a name");
        return take_number(scanner, 0, max_number);
    }
    const auto found = names.find(name);
    if (found == names.end())
        fail(start, in_quotes(name) + " is the name of nothing here" + is_it(name, all_of(names)));
    const Named& named = found->second;
    if (named.kind != Kind::number && named.kind != wanted)
        fail(start, in_quotes(name) + " is a " + std::string(kind_name(named.kind)) + ", and " +
                        std::string(what) + " is " +
                        (wanted == Kind::number ? "a plain number"
                                                : "a " + std::string(kind_name(wanted))));
    return named.number;
}

}  // namespace

std::vector<std::string_view> all_of(const Names& names) {
    std::vector<std::string_view> all;
    for (const auto& [name, named] : names)
        all.push_back(name);
    return all;
}

std::string_view kind_name(Kind kind) { return kind_names[static_cast<std::size_t>(kind)]; }

int take_sum(Scanner& scanner, const Names& names, Kind wanted, std::string_view what, int min,
             int max) {
    constexpr int beyond = 100'000'000;  // no sum that is still of use
    peek(scanner);
    const Scanner start = scanner;
    int sum = 0;
    int sign = take_char(scanner, '-') ? -1 : 1;
    for (;;) {
        sum += sign * take_term(scanner, names, wanted, what);
        if (take_char(scanner, '+'))
            sign = 1;
        else if (take_char(scanner, '-'))
            sign = -1;
        else
            break;
        if (sum > beyond || sum < -beyond) break;
    }
    if (sum < min || sum > max)
        fail(start, std::string(what) + " is " + std::to_string(sum) + ", outside " +
                        std::to_string(min) + " to " + std::to_string(max));
    return sum;
}

}  // namespace orvanel
