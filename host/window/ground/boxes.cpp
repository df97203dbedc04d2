#include "host/window/ground/boxes.h"

#include <utility>
#include <vector>

namespace orvanel {

namespace {

constinit int open_boxes = 0;
constinit std::vector<std::function<void()>> waiting{};

}  // namespace

void box_opened() { ++open_boxes; }

void box_closed() {
    --open_boxes;
    // One of these may open a box, for which the others wait again.
    while (open_boxes == 0 && !waiting.empty()) {
        const std::function<void()> next = std::move(waiting.front());
        waiting.erase(waiting.begin());
        next();
    }
}

void drop_boxes() {
    open_boxes = 0;
    waiting.clear();
}

bool box_is_open() { return open_boxes > 0; }

bool postpone(std::function<void()> action) {
    if (box_is_open()) waiting.push_back(std::move(action));
    return box_is_open();
}

}  // namespace orvanel
