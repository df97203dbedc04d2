#include "kit/stream.h"

#include "base/bytes.h"
#include "kit/commands.h"
#include "kit/image.h"

#include <algorithm>
#include <array>

namespace orvanel {

namespace {

/// Two commands that do nothing, and whose sizes add up to any number but 1.
constexpr std::array<std::uint8_t, 2> two_idle_bytes{lead_in_esc, '='};
constexpr std::array<std::uint8_t, 3> three_idle_bytes{lead_in_esc, '!', 0};

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// The lead of `ESC & E`.
void append_head(Bytes& bytes, int address, int length, char operation) {
    append(bytes, std::array<std::uint8_t, 8>{lead_in_esc, '&', 'E', low8(address),
                                              low8(address >> 8), low8(length), low8(length >> 8),
                                              static_cast<std::uint8_t>(operation)});
}

/// Bytes of the image that have to be written.
int written_size(std::span<const std::uint8_t> image) {
    const auto last = std::find_if(image.rbegin(), image.rend(),
                                   [](std::uint8_t byte) { return byte != erased_byte; });
    const int used = static_cast<int>(image.rend() - last);
    const int length = pair_at(image, image_length_at);
    const int whole = length == unprogrammed ? 0 : length + crc_size;
    return std::max({used, std::min(whole, static_cast<int>(image.size())), 1});
}

/// Lines of the source, where names say how many of the blocks have been written.
void append_lines(const Kit& kit, const std::vector<SourceLine>& lines, int block, int blocks,
                  Bytes& stream, Faults& faults) {
    if (lines.empty()) return;
    Names names = kit.names;
    names["block"] = {Kind::number, block};
    names["blocks"] = {Kind::number, blocks};
    names["percent"] = {Kind::number, block * 100 / blocks};
    const Assembly assembly{&names, [&kit](int number) {
                                for (const Item& item : kit.items)
                                    if (item.kind == Kind::picture && item.number == number)
                                        return bytes_of(kit, item);
                                return Bytes();
                            }};
    for (const SourceLine& line : lines)
        try {
            assemble_line(line, assembly, stream);
        } catch (const Fault& fault) {
            faults.push_back(fault);
        }
}

void append_filler(const Kit& kit, std::size_t closing, Bytes& stream, Faults& faults) {
    if (kit.stream.length < 0) return;
    const auto wanted = static_cast<std::size_t>(kit.stream.length);
    const std::size_t size = stream.size() + closing;
    const Place place{kit.file, 0, 0};
    if (size > wanted || size + 1 == wanted) {
        faults.emplace_back(place, "the stream takes " + std::to_string(size) +
                                       " bytes and can't be " + std::to_string(wanted) +
                                       (size > wanted ? "" : "; one byte alone can't be filled"));
        return;
    }
    std::size_t missing = wanted - size;
    if (missing % 2 != 0) {
        append(stream, three_idle_bytes);
        missing -= three_idle_bytes.size();
    }
    for (; missing > 0; missing -= two_idle_bytes.size())
        append(stream, two_idle_bytes);
}

/// Does to the image what an `ESC & E` of at least one byte does.
void play(const Parsed& command, std::span<const std::uint8_t> stream, Bytes& image) {
    const auto address = std::min(static_cast<std::size_t>(command.address), image.size());
    const std::size_t count =
        std::min(static_cast<std::size_t>(command.length), image.size() - address);
    const auto at = image.begin() + static_cast<std::ptrdiff_t>(address);
    if (command.operation == 'W') {
        if (command.address == 0) std::fill(image.begin(), image.end(), erased_byte);
        const auto data = stream.subspan(command.tail_at, count);
        std::copy(data.begin(), data.end(), at);
    } else if (command.operation == 'C') {
        std::fill_n(at, count, erased_byte);
        put_crc(image);
    }
}

}  // namespace

Bytes stream_of(const Kit& kit, std::span<const std::uint8_t> image, Faults& faults) {
    const StreamPlan& plan = kit.stream;
    const int size = written_size(image);
    const int blocks = (size + plan.block - 1) / plan.block;
    Bytes stream;
    append_lines(kit, plan.before, 0, blocks, stream, faults);
    for (int block = 0; block < blocks; ++block) {
        const int address = block * plan.block;
        const int length = std::min(plan.block, size - address);
        append_head(stream, address, length, 'W');
        append(stream,
               image.subspan(static_cast<std::size_t>(address), static_cast<std::size_t>(length)));
        const std::size_t faults_before = faults.size();
        append_lines(kit, plan.after_block, block + 1, blocks, stream, faults);
        if (faults.size() > faults_before) return {};  // reported once, not for each block
    }
    append_lines(kit, plan.after, blocks, blocks, stream, faults);
    Bytes closing;
    if (plan.restart) append_head(closing, 0, 0, 'J');
    append_filler(kit, closing.size(), stream, faults);
    append(stream, closing);
    return stream;
}

Bytes image_from_stream(std::span<const std::uint8_t> stream, int size) {
    Bytes image(static_cast<std::size_t>(size), erased_byte);
    while (!stream.empty()) {
        const bool command = stream[0] == lead_in_esc || stream[0] == lead_in_hash;
        const std::optional<Parsed> parsed = command ? parse_command(stream) : std::nullopt;
        if (command && !parsed) break;
        if (parsed && parsed->length > 0) play(*parsed, stream, image);
        stream = stream.subspan(parsed ? parsed->size : 1);
    }
    return image;
}

}  // namespace orvanel
