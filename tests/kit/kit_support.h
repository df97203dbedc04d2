// kit_support.h: kits in a folder of the test, and what building them says.

#pragma once

#include "kit/build.h"
#include "kit/dots.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace orvanel {

/// A folder that is gone with the test.
class KitFolder : public testing::Test {
  protected:
    std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("kit" + std::to_string(getpid()));

    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void put(const std::string& name, std::string_view content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
    }
    void put(const std::string& name, const Bytes& content) const {
        put(name, std::string(content.begin(), content.end()));
    }

    /// Builds a source as if it were k.kit of the folder; messages without the folder.
    Built build(std::string_view text, BuildOptions options = {-1, -1, -1}) {
        Faults faults;
        Built built = build_text((folder / "k.kit").string(), text, options,
                                 [](const std::string&) {}, faults);
        messages.clear();
        for (const Fault& fault : faults)
            messages += message_of(fault) + "\n";
        const std::string prefix = folder.string() + "/";
        for (std::size_t at = messages.find(prefix); at != std::string::npos;
             at = messages.find(prefix))
            messages.erase(at, prefix.size());
        return built;
    }

    std::string messages;  // of the last build, a line each
};

inline Bytes bytes_from(std::string_view text) { return {text.begin(), text.end()}; }

inline std::string file_text(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// The dots as lines of # and .
inline std::string dots_text(const Dots& dots) {
    std::string text = "\n";
    for (int y = 0; y < dots.height; ++y) {
        for (int x = 0; x < dots.width; ++x)
            text += dot_at(dots, x, y) ? '#' : '.';
        text += '\n';
    }
    return text;
}

/// Dots from such lines.
inline Dots dots_from(std::string_view text) {
    text = text.substr(std::min(text.find_first_of("#."), text.size()));
    const auto width = text.find('\n');
    const auto rows = static_cast<int>((text.size() + 1) / (width + 1));
    Dots dots = blank_dots(static_cast<int>(width), rows);
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '#')
            set_dot(dots, static_cast<int>(i % (width + 1)), static_cast<int>(i / (width + 1)));
    return dots;
}

}  // namespace orvanel
