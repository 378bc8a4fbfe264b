#include "zelvar/tool/PngFile.h"

#include <cstdint>
#include <cstdio>
#include <future>
#include <string_view>
#include <system_error>
#include <vector>

#include <zlib.h>

namespace zelvar::tool {

namespace {

constexpr std::size_t kPixelBytes = 3;
constexpr int kRowsOfAPart = 256;
constexpr std::uint8_t kAverageFilter = 3;

/// Rows of the picture, compressed.
struct Part {
    DString bytes;
    uLong checksum = 0; ///< of what was compressed
    std::size_t length = 0;
};

/// Each row as its differences from the mean of what stands left of it and above.
std::vector<std::uint8_t> Filtered(DCanvas const &picture, int begin, int end) {
    std::size_t const length = static_cast<std::size_t>(picture.GetWidth()) * kPixelBytes;
    std::vector<std::uint8_t> const none(length);
    std::vector<std::uint8_t> filtered((length + 1) * static_cast<std::size_t>(end - begin));
    std::uint8_t *out = filtered.data();
    for (int y = begin; y < end; ++y) {
        std::uint8_t const *const row = picture.Row(y);
        std::uint8_t const *const above = y == 0 ? none.data() : picture.Row(y - 1);
        *out++ = kAverageFilter;
        for (std::size_t i = 0; i < kPixelBytes; ++i)
            out[i] = static_cast<std::uint8_t>(row[i] - above[i] / 2);
        for (std::size_t i = kPixelBytes; i < length; ++i)
            out[i] = static_cast<std::uint8_t>(row[i] - (row[i - kPixelBytes] + above[i]) / 2);
        out += length;
    }
    return filtered;
}

/// Parts can stand one behind the other: only the last one ends the stream.
Part Compress(DCanvas const &picture, int begin, int end) {
    std::vector<std::uint8_t> filtered = Filtered(picture, begin, end);
    Part part;
    part.length = filtered.size();
    part.checksum = adler32(adler32(0, nullptr, 0), filtered.data(), static_cast<uInt>(filtered.size()));
    z_stream stream{};
    constexpr int withoutHeader = -MAX_WBITS;
    constexpr int usualMemory = 8;
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, withoutHeader, usualMemory, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    constexpr uLong endOfPart = 16;
    part.bytes.resize(deflateBound(&stream, static_cast<uLong>(filtered.size())) + endOfPart);
    stream.next_in = filtered.data();
    stream.avail_in = static_cast<uInt>(filtered.size());
    stream.next_out = reinterpret_cast<Bytef *>(part.bytes.data());
    stream.avail_out = static_cast<uInt>(part.bytes.size());
    deflate(&stream, end == picture.GetHeight() ? Z_FINISH : Z_SYNC_FLUSH);
    part.bytes.resize(stream.total_out);
    deflateEnd(&stream);
    return part;
}

DString BigEndian(std::uint64_t value) {
    DString bytes;
    for (unsigned shift = 32; shift != 0;)
        bytes += static_cast<char>(value >> (shift -= 8U));
    return bytes;
}

void AddChunk(DString &file, std::string_view type, std::string_view data) {
    DString const content = DString(type).append(data);
    uLong const sum = crc32(0, reinterpret_cast<Bytef const *>(content.data()), static_cast<uInt>(content.size()));
    file += BigEndian(data.size()) + content + BigEndian(sum);
}

/// All rows, as a stream of zlib's.
DString Compressed(DCanvas const &picture) {
    int const height = picture.GetHeight();
    int const middle = height > kRowsOfAPart ? height / 2 : 0;
    std::future<Part> first;
    Part upper;
    try {
        if (middle > 0)
            first = std::async(std::launch::async, Compress, std::cref(picture), 0, middle);
    } catch (std::system_error const &) {
        upper = Compress(picture, 0, middle); // the system has no thread to give
    }
    Part const lower = Compress(picture, middle, height);
    if (first.valid())
        upper = first.get();
    uLong const sum = middle == 0 ? lower.checksum
                                  : adler32_combine(upper.checksum, lower.checksum, static_cast<z_off_t>(lower.length));
    constexpr std::string_view header = "\x78\x01"; // deflated with the usual window, fast
    return DString(header) + upper.bytes + lower.bytes + BigEndian(sum);
}

} // namespace

bool WritePng(DCanvas const &picture, DString const &path) {
    using namespace std::string_view_literals;
    DString file("\x89PNG\r\n\x1a\n");
    constexpr std::string_view eightBitColors = "\x08\x02\0\0\0"sv;
    AddChunk(file, "IHDR",
             BigEndian(static_cast<std::uint64_t>(picture.GetWidth())) +
                 BigEndian(static_cast<std::uint64_t>(picture.GetHeight())) + DString(eightBitColors));
    AddChunk(file, "IDAT", Compressed(picture));
    AddChunk(file, "IEND", {});
    std::FILE *const out = std::fopen(path.c_str(), "wbe");
    if (out == nullptr)
        return false;
    bool const isWritten = std::fwrite(file.data(), 1, file.size(), out) == file.size();
    return std::fclose(out) == 0 && isWritten;
}

} // namespace zelvar::tool
