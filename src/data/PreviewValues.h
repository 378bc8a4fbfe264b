#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/data/PreviewChoice.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace zelvar {

/// The samples of one channel that a picture was made of, as the image has them: picked, never mixed.
class ZELVAR_API ValuePlane {
public:
    ValuePlane() = default;
    /// `samples` of one of `RDIDataType`, packed. NaN, infinities and `nodata` are no values.
    ValuePlane(int channel, int type, std::vector<unsigned char> samples, std::optional<double> nodata,
               PreviewChoice::Stretch stretch);

    [[nodiscard]] int Channel() const { return m_channel; }
    [[nodiscard]] std::size_t Bytes() const { return m_samples.size(); }
    /// Nothing where there is no value.
    [[nodiscard]] std::optional<double> At(std::size_t index) const;

    struct Range {
        double min = 0;
        double max = 0;
        [[nodiscard]] bool operator==(Range const &) const = default;
    };
    /// Of all values; nothing if there are none.
    [[nodiscard]] std::optional<Range> const &Values() const { return m_values; }
    /// Those that are shown as black and as white, and what lies beyond them.
    [[nodiscard]] Range const &Shown() const { return m_shown; }

private:
    int m_channel = 0;
    int m_type = 0;
    std::vector<unsigned char> m_samples;
    std::optional<double> m_nodata; ///< as a sample of the type can be
    std::optional<Range> m_values;
    Range m_shown;
};

/// What is known of the values behind a picture, so that nothing is read to tell the one under the pointer.
struct PreviewValues {
    static constexpr std::size_t kMostBytes = std::size_t{4} << 20U; ///< of all planes

    int width = 0; ///< of each plane; at most the picture's and at most the image's
    int height = 0;
    bool isPalette = false;         ///< the values are indexes of colours
    std::vector<ValuePlane> planes; ///< one, or red, green and blue

    /// The place in a plane below a point of the picture, from 0 to 1 on each side; nothing beside it.
    [[nodiscard]] ZELVAR_API std::optional<std::size_t> IndexAt(double x, double y) const;
};

} // namespace zelvar
