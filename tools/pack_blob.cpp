// pack_blob.cpp: compresses a file with zlib into a list of bytes that a C++ array takes in with
// #include; base/unpack.h unpacks it.
//
//     pack_blob IN OUT.inc
//
// Leaves with 0, or with 1 after one message on stderr.

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace orvanel {
namespace {

constexpr std::size_t bytes_per_line = 16;

int fail(const char* file, const char* message) {
    std::fprintf(stderr, "%s: error: %s\n", file, message);
    return 1;
}

/// Empty if there is no memory left.
std::vector<std::uint8_t> compressed(std::span<const std::uint8_t> bytes) {
    uLongf size = compressBound(bytes.size());
    std::vector<std::uint8_t> block(size);
    if (compress2(block.data(), &size, bytes.data(), bytes.size(), Z_BEST_COMPRESSION) != Z_OK)
        return {};
    block.resize(size);
    return block;
}

/// Two hex digits each, a comma after each.
std::string listing(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::array<char, 8> item{};
        std::snprintf(item.data(), item.size(), "0x%02X,", static_cast<unsigned>(bytes[i]));
        text += item.data();
        text += i % bytes_per_line == bytes_per_line - 1 ? '\n' : ' ';
    }
    return text + '\n';
}

int run(const char* in_path, const char* out_path) {
    std::ifstream in(in_path, std::ios::binary);
    if (!in) return fail(in_path, "cannot open");
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const auto block = compressed(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    if (block.empty()) return fail(in_path, "cannot compress");
    std::ofstream out(out_path, std::ios::binary);
    out << listing(block) << std::flush;
    if (out) return 0;
    // A build would take what was written so far for finished; what isn't a plain file isn't ours.
    std::error_code ignored;
    if (std::filesystem::is_regular_file(out_path, ignored))
        std::filesystem::remove(out_path, ignored);
    return fail(out_path, "cannot write");
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: pack_blob IN OUT.inc\n");
        return 1;
    }
    return orvanel::run(argv[1], argv[2]);
}
