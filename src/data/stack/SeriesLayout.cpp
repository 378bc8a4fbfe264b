#include "zelvar/data/stack/SeriesLayout.h"

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

using Axis = SeriesLayout::Axis;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool IsLetter(char c) { return Lower(c) >= 'a' && Lower(c) <= 'z'; }

/// The letters in front of a number, in small ones: "t" of "cells_t" and of "cells_t_".
DString WordBefore(std::string_view text) {
    while (!text.empty() && std::string_view("_-= ").find(text.back()) != std::string_view::npos)
        text.remove_suffix(1);
    DString word;
    for (; !text.empty() && IsLetter(text.back()); text.remove_suffix(1))
        word.insert(word.begin(), Lower(text.back()));
    return word;
}

std::optional<Axis> AxisOf(DString const &word) {
    static constexpr std::pair<std::string_view, Axis> kWords[] = {
        {"t", Axis::Frames},    {"time", Axis::Frames},      {"frame", Axis::Frames}, {"z", Axis::Slices},
        {"s", Axis::Slices},    {"slice", Axis::Slices},     {"plane", Axis::Slices}, {"c", Axis::Channels},
        {"ch", Axis::Channels}, {"channel", Axis::Channels}, {"w", Axis::Channels}};
    for (auto const &[known, axis] : kWords)
        if (word == known)
            return axis;
    return std::nullopt;
}

} // namespace

SeriesLayout::SeriesLayout(SeriesName const &name, Axis only) {
    std::size_t const numbers = name.Ranges().size();
    std::vector<std::optional<Axis>> axes(numbers);
    if (numbers > 1)
        for (std::size_t i = 0; i < numbers; ++i)
            axes[i] = AxisOf(WordBefore(name.Texts()[i]));
    std::vector<Axis> left{only, only == Slices ? Frames : Slices, Channels};
    for (auto const &axis : axes)
        left.erase(std::remove(left.begin(), left.end(), axis), left.end());
    for (std::size_t i = numbers; i-- > 0;)
        if (!axes[i]) {
            axes[i] = left.empty() ? Channels : left.front();
            left.erase(left.begin(), left.begin() + (left.empty() ? 0 : 1));
        }
    m_numbers.resize(numbers);
    std::uint64_t stride = 1;
    for (std::size_t i = numbers; i-- > 0; stride *= m_numbers[i].count) {
        m_numbers[i] = {.axis = *axes[i], .count = name.Ranges()[i].Count(), .stride = stride};
        m_counts[*axes[i]] *= m_numbers[i].count;
    }
}

std::uint64_t SeriesLayout::SlotAt(Place place) const {
    std::uint64_t slot = 0;
    for (std::size_t i = m_numbers.size(); i-- > 0;) {
        Number const &number = m_numbers[i];
        slot += place[number.axis] % number.count * number.stride;
        place[number.axis] /= number.count;
    }
    return slot;
}

} // namespace zelvar
