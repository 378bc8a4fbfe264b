#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace zelvar::bench {

/// Writes plain TIFF files without a library: the process that is measured must not have one.
class Tiff {
public:
    explicit Tiff(std::string const &path) : m_file(path, std::ios::binary) {
        m_file.write("II*\0", 4);
        m_nextLink = 4;
        Number(std::uint32_t{0});
    }
    /// One page of 8-bit samples, `bands` to a pixel.
    void AddPage(std::uint32_t width, std::uint32_t height, std::uint16_t bands) {
        auto const bits = static_cast<std::uint32_t>(m_file.tellp());
        for (int i = 0; i < 3; ++i)
            Number(std::uint16_t{8});
        auto const pixels = static_cast<std::uint32_t>(m_file.tellp());
        std::vector<char> row(std::size_t{width} * bands);
        for (std::uint32_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < row.size(); ++x)
                row[x] = static_cast<char>((x * 7 + y * std::size_t{3}) ^ (x * y >> 5U));
            m_file.write(row.data(), static_cast<std::streamsize>(row.size()));
        }
        if (m_file.tellp() % 2 != 0)
            m_file.put(0);
        auto const directory = static_cast<std::uint32_t>(m_file.tellp());
        m_file.seekp(m_nextLink);
        Number(directory);
        m_file.seekp(directory);
        Number(std::uint16_t{9});
        Tag(256, 4, 1, width);
        Tag(257, 4, 1, height);
        Tag(258, 3, bands, bands == 3 ? bits : 8);
        Tag(259, 3, 1, 1);                  // not compressed
        Tag(262, 3, 1, bands == 3 ? 2 : 1); // colours or grey
        Tag(273, 4, 1, pixels);
        Tag(277, 3, 1, bands);
        Tag(278, 4, 1, height);
        Tag(279, 4, 1, width * height * bands);
        m_nextLink = m_file.tellp();
        Number(std::uint32_t{0});
    }

private:
    template <class T>
    void Number(T value) {
        m_file.write(reinterpret_cast<char const *>(&value), sizeof value);
    }
    void Tag(std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::uint32_t value) {
        Number(tag);
        Number(type);
        Number(count);
        Number(value);
    }
    std::ofstream m_file;
    std::streamoff m_nextLink = 0;
};

} // namespace zelvar::bench
