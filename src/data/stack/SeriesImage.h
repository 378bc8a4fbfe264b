#pragma once

#include "zelvar/data/OpenImage.h"
#include "zelvar/data/SeriesCheck.h"
#include "zelvar/data/stack/SeriesLayout.h"

#include <list>
#include <memory>

namespace zelvar {

/// A window of a channel, pixels, and how it is brought to a size: see `RDIDriver::ReadBlockRsmpl`.
struct SeriesWindow : RDIWindow {
    int resampling = RDIDriver::Nearest;
    bool usePyramid = true;
    bool clip = true;
};

/// A series of files that is open as one image: cells of one size, each a channel of a member. Type, size and number of
/// channels are those of the first member that opens. Members are opened when they are read or looked at, and a few of
/// them stay open. Belongs to the thread that made it.
class SeriesImage {
public:
    /// Null, with the reason in `error`, if the moniker names no series, no member opens among the first ones, or so
    /// many are missing that the name says nothing. `stop` may be null and outlives the image.
    [[nodiscard]] static std::unique_ptr<SeriesImage> Open(BDIMoniker const &moniker, StopSignal const *stop,
                                                           DError &error);

    [[nodiscard]] int Channels() const;
    [[nodiscard]] int SizeX() const { return m_facts.width * m_frames; }
    [[nodiscard]] int SizeY() const { return m_facts.height * m_slices; }
    [[nodiscard]] int DataType(int channel) const; ///< RDI_None for one that is not there
    /// With those of the members themselves.
    [[nodiscard]] RDIGeoCoo GeoCode() const;
    [[nodiscard]] std::size_t MemberCount() const { return m_slots.size(); }
    [[nodiscard]] DString Summary() const { return SeriesSummary(m_place.name, m_slots); }
    /// Of the first member.
    [[nodiscard]] DString TextOf(char const *attribute, int channel);
    [[nodiscard]] int NumberOf(char const *attribute, int channel);

    /// Channels of one type. What no member stands for becomes zeros; one that cannot be read, or is not like the
    /// first, fails the whole: see `LastError`.
    [[nodiscard]] bool Read(int channel, int count, SeriesWindow const &window, unsigned char *planes);
    /// A window inside one cell.
    [[nodiscard]] bool ReadPalette(SeriesWindow const &window, unsigned char *rgb);
    /// What there is of a damaged member, as `RDIDriver::SalvageRsmpl`: a window inside one cell.
    [[nodiscard]] bool Salvage(int channel, int count, RDIWindow const &window, void *buffer, RDIRowsRead &read);
    [[nodiscard]] DError const &LastError() const { return m_lastError; }

    /// Looks at further members for a while.
    [[nodiscard]] SeriesCheck const &TakeOnCheck();

private:
    struct Member {
        std::uint64_t slot = 0;
        std::unique_ptr<OpenImage> image;
    };
    SeriesImage(SeriesPlace place, SeriesLayout layout, StopSignal const *stop)
        : m_place(std::move(place)), m_layout(std::move(layout)), m_stop(stop) {}
    [[nodiscard]] bool Begin(DString const &options, DError &error);
    [[nodiscard]] bool FindFirst(DError &error);
    [[nodiscard]] bool TakeSizes(DError &error);
    [[nodiscard]] std::unique_ptr<OpenImage> OpenMember(std::uint64_t slot, DError &error) const;
    /// Open and like the first; null, with `LastError`.
    [[nodiscard]] OpenImage *MemberAt(std::uint64_t slot);
    [[nodiscard]] bool IsStopped() const { return m_stop != nullptr && m_stop->load(std::memory_order_relaxed); }
    struct Cell {
        int column = 0;
        int row = 0;
    };
    enum class Found { Member, Nothing, Failure };
    [[nodiscard]] Found Find(Cell cell, int channel, OpenImage *&member);
    [[nodiscard]] bool ReadCell(Cell cell, int channel, int count, SeriesWindow const &window, unsigned char *planes);

    SeriesPlace m_place;
    SeriesLayout m_layout;
    StopSignal const *m_stop; ///< not owned, may be null
    DString m_options;        ///< of each member
    std::vector<std::uint64_t> m_slots;
    std::uint64_t m_first = 0; ///< slot of the member that the figures come from
    SeriesMemberFacts m_facts; ///< of each member
    std::vector<int> m_types;  ///< of each member's channels
    RDIGeoCoo m_geo;           ///< of each member
    int m_slices = 1;          ///< of members, one under the other
    int m_frames = 1;
    std::list<Member> m_open; ///< the one that was used last in front
    SeriesCheck m_check;
    std::uint64_t m_checkStep = 1;
    DError m_lastError;
};

} // namespace zelvar
