#include "zelvar/data/gdal/Utf8Copy.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/FileDescriptor.h"

#include <cpl_vsi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include <fcntl.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kLargest = std::size_t{256} << 20U;
constexpr std::string_view kTextExtensions[] = {"txt", "tcsv"};
constexpr std::string_view kTableExtensions[] = {"csv", "tsv", "psv", "txt", "tcsv"};

template <class Extensions>
bool HasExtension(Source const &source, Extensions const &extensions) {
    std::string_view const extension = ExtensionOf(source.diskPath);
    return std::any_of(std::begin(extensions), std::end(extensions),
                       [&](std::string_view known) { return EqualNoCase(known, extension); });
}

/// Its first bytes; none for what is no plain local file.
DString HeadOf(Source const &source) {
    std::array<char, 4096> head{};
    if (source.reach == Reach::Network || source.name != source.diskPath)
        return {};
    FileDescriptor const file(open(source.diskPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    ssize_t const count = file.IsOpen() ? pread(file.Get(), head.data(), head.size(), 0) : 0;
    return {head.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

void AppendUtf8(DString &out, std::uint32_t code) {
    auto const add = [&](std::uint32_t byte) { out += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0U | code >> 6U);
        add(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        add(0xE0U | code >> 12U);
        add(0x80U | (code >> 6U & 0x3FU));
        add(0x80U | (code & 0x3FU));
    } else {
        add(0xF0U | code >> 18U);
        add(0x80U | (code >> 12U & 0x3FU));
        add(0x80U | (code >> 6U & 0x3FU));
        add(0x80U | (code & 0x3FU));
    }
}

/// The text behind a mark of its byte order; halves of characters become U+FFFD.
DString FromUtf16(std::string_view bytes, bool bigEndian) {
    constexpr std::uint32_t replacement = 0xFFFD;
    auto const unitAt = [&](std::size_t i) {
        auto const first = static_cast<unsigned char>(bytes[i]);
        auto const second = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<std::uint32_t>(bigEndian ? first << 8U | second : second << 8U | first);
    };
    DString text;
    text.reserve(bytes.size() / 2 + bytes.size() / 8);
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        std::uint32_t const unit = unitAt(i);
        bool const isHigh = unit >= 0xD800 && unit < 0xDC00;
        std::uint32_t const low = isHigh && i + 3 < bytes.size() ? unitAt(i + 2) : 0;
        if (isHigh && low >= 0xDC00 && low < 0xE000) {
            AppendUtf8(text, 0x10000U + ((unit - 0xD800U) << 10U) + (low - 0xDC00U));
            i += 2;
        } else {
            AppendUtf8(text, unit >= 0xD800 && unit < 0xE000 ? replacement : unit);
        }
    }
    return text;
}

} // namespace

bool IsPlainText(Source const &source, bool anyName) {
    if (!anyName && !HasExtension(source, kTextExtensions))
        return false;
    DString const head = HeadOf(source);
    return !head.empty() && head.find('\0') == DString::npos;
}

std::unique_ptr<Utf8Copy> Utf8Copy::Of(Source const &source) {
    if (!HasExtension(source, kTableExtensions))
        return nullptr;
    DString const head = HeadOf(source);
    bool const isBig = head.starts_with("\xFE\xFF");
    DString bytes;
    if ((!isBig && !head.starts_with("\xFF\xFE")) || !DFile(source.diskPath).ReadAll(bytes, kLargest))
        return nullptr;
    DString const text = FromUtf16(bytes, isBig);
    bytes = {};
    void *const memory = VSIMalloc(text.size() + 1);
    if (memory == nullptr)
        return nullptr;
    std::memcpy(memory, text.data(), text.size());
    static std::atomic<std::uint64_t> last{0};
    std::unique_ptr<Utf8Copy> copy(
        new Utf8Copy("/vsimem/zelvar-" + std::to_string(++last) + "/" + DFile(source.diskPath).GetName()));
    constexpr int memoryIsGiven = 1;
    VSILFILE *const file =
        VSIFileFromMemBuffer(copy->m_name.c_str(), static_cast<GByte *>(memory), text.size(), memoryIsGiven);
    if (file == nullptr)
        return nullptr;
    VSIFCloseL(file);
    return copy;
}

Utf8Copy::~Utf8Copy() { VSIUnlink(m_name.c_str()); }

} // namespace zelvar::gdal
