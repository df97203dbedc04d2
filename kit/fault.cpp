#include "kit/fault.h"

#include <algorithm>
#include <tuple>

namespace orvanel {

namespace {

constexpr std::size_t max_messages = 20;

}  // namespace

void sort_by_place(Faults& faults) {
    const auto place = [](const Fault& fault) {
        return std::tie(fault.place.file, fault.place.line, fault.place.column);
    };
    std::stable_sort(faults.begin(), faults.end(),
                     [place](const Fault& a, const Fault& b) { return place(a) < place(b); });
}

std::string message_of(const Fault& fault) {
    std::string text = fault.place.file;
    for (const int number : {fault.place.line, fault.place.column})
        if (number > 0) text += ":" + std::to_string(number);
    return text + ": error: " + fault.what();
}

std::vector<std::string> messages_of(Faults faults, const std::string& program) {
    sort_by_place(faults);
    std::vector<std::string> messages;
    for (std::size_t i = 0; i < faults.size() && i < max_messages; ++i)
        messages.push_back(message_of(faults[i]));
    if (faults.size() > max_messages)
        messages.push_back(program + ": error: and " +
                           std::to_string(faults.size() - max_messages) + " more");
    return messages;
}

}  // namespace orvanel
