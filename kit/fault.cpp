#include "kit/fault.h"

#include <algorithm>
#include <tuple>

namespace orvanel {

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

}  // namespace orvanel
