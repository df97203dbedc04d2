#include "kit/fault.h"

namespace orvanel {

std::string message_of(const Fault& fault) {
    std::string text = fault.place.file;
    for (const int number : {fault.place.line, fault.place.column})
        if (number > 0) text += ":" + std::to_string(number);
    return text + ": error: " + fault.what();
}

}  // namespace orvanel
