#include "zelvar/gallery/SampleContainer.h"

#include <array>
#include <cstdint>
#include <fstream>

namespace zelvar::gallery {

namespace {

void Put(DString &bytes, std::size_t value, int count) {
    for (; count > 0; --count, value >>= 8U)
        bytes += static_cast<char>(value & 0xFFU);
}

/// A TIFF file of so many pages, each a blob that moves from page to page.
DString TiffOf(int pages, int seed) {
    constexpr std::size_t side = 48;
    constexpr std::size_t tagCount = 8;
    DString bytes("II*\0\x08\0\0\0", 8);
    for (int page = 0; page < pages; ++page) {
        std::size_t const end = bytes.size() + 2 + tagCount * 12 + 4;
        std::array<std::array<std::size_t, 2>, tagCount> const tags{
            {{256, side}, {257, side}, {258, 8}, {259, 1}, {262, 1}, {273, end}, {278, side}, {279, side * side}}};
        Put(bytes, tagCount, 2);
        for (auto const &[tag, value] : tags) {
            Put(bytes, tag, 2);
            Put(bytes, 4, 2); // 32 bits
            Put(bytes, 1, 4);
            Put(bytes, value, 4);
        }
        Put(bytes, page + 1 < pages ? end + side * side : 0, 4);
        int const middle = 12 + (page * 7 + seed * 5) % 24;
        for (int y = 0; y < static_cast<int>(side); ++y)
            for (int x = 0; x < static_cast<int>(side); ++x) {
                int const distance = (x - middle) * (x - middle) + (y - 24) * (y - 24);
                bytes += static_cast<char>(distance < 150 ? 230 - distance : 30 + x);
            }
    }
    return bytes;
}

std::uint32_t Crc32(DString const &bytes) {
    std::uint32_t crc = ~0U;
    for (char const c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

/// A ZIP archive whose files are stored as they are.
class Archive {
public:
    void Add(DString const &name, DString const &content) {
        DString entry;
        Put(entry, 20, 2);         // version that reads it
        Put(entry, 0, 4);          // flags, method
        Put(entry, 0x21 << 16, 4); // time and date
        Put(entry, Crc32(content), 4);
        Put(entry, content.size(), 4);
        Put(entry, content.size(), 4);
        Put(entry, name.size(), 2);
        Put(entry, 0, 2); // no extra field
        m_directory += "PK\x01\x02";
        Put(m_directory, 20, 2); // version that made it
        m_directory += entry;
        Put(m_directory, 0, 10); // comment, disk, attributes
        Put(m_directory, m_files.size(), 4);
        m_directory += name;
        m_files += "PK\x03\x04" + entry + name + content;
        ++m_count;
    }
    [[nodiscard]] DString Bytes() const {
        DString bytes = m_files + m_directory + "PK\x05\x06";
        Put(bytes, 0, 4);
        Put(bytes, m_count, 2);
        Put(bytes, m_count, 2);
        Put(bytes, m_directory.size(), 4);
        Put(bytes, m_files.size(), 4);
        Put(bytes, 0, 2);
        return bytes;
    }

private:
    DString m_files;
    DString m_directory;
    std::size_t m_count = 0;
};

} // namespace

bool WriteSampleContainer(DString const &path) {
    Archive archive;
    int seed = 0;
    for (char const *row : {"row A", "row B"})
        for (int well = 1; well <= 3; ++well, ++seed)
            archive.Add(Format("%s/well %d.tif", row, well), TiffOf(4, seed));
    archive.Add("overview.tif", TiffOf(1, seed));
    archive.Add("wells.csv", "well,cells\nA1,120\nA2,98\nA3,143\nB1,77\nB2,101\nB3,64\n");
    std::ofstream file(path, std::ios::binary);
    DString const bytes = archive.Bytes();
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file.flush().good();
}

} // namespace zelvar::gallery
