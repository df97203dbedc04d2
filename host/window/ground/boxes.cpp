#include "host/window/ground/boxes.h"

#include "host/import/picture_import.h"
#include "host/window/roof/menu_command.h"

#include <string>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

struct PutOff {
    int item;  // of the menu; 0 for a dropped file
    std::string path;
    int px, py;
};

constinit int open_boxes = 0;
constinit std::vector<PutOff> put_off{};

void run(const PutOff& action) {
    if (action.item != 0)
        menu_command(action.item);
    else
        drop_file(action.path, action.px, action.py);
}

}  // namespace

void box_opened() { ++open_boxes; }

void box_closed() {
    --open_boxes;
    // One of these may open a box, for which the others wait again.
    while (open_boxes == 0 && !put_off.empty()) {
        const PutOff next = std::move(put_off.front());
        put_off.erase(put_off.begin());
        run(next);
    }
}

bool box_is_open() { return open_boxes > 0; }

bool put_off_menu_item(int id) {
    if (box_is_open()) put_off.push_back({id, "", 0, 0});
    return box_is_open();
}

bool put_off_drop(std::string_view path, int px, int py) {
    if (box_is_open()) put_off.push_back({0, std::string(path), px, py});
    return box_is_open();
}

}  // namespace orvanel
