#include "zelvar/thumbnails/ThumbnailMaker.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/tables/ADIFile.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kMostLevels = 8;  // of a container that are gone down
constexpr int kMostNodes = 256; // that are looked at for the first image

bool IsStopSet(StopSignal const *stop) { return stop != nullptr && stop->load(std::memory_order_relaxed); }

/// Whether there will never be a picture, whoever tries. What a driver does not know may be something else than an
/// image.
bool IsFinal(DError const &error) {
    using enum DError::Cause;
    return error.Why() == Damaged || error.Why() == Crashed || error.Why() == TooLarge;
}
bool IsPassing(DError const &error) {
    using enum DError::Cause;
    return error.Why() == Late || error.Why() == NoAnswer;
}

/// The nodes of a tree, as far as it takes to find the first image.
class Tree {
public:
    explicit Tree(DString const &moniker)
        : m_tree(BDIDrvrMngr::Instance()->OpenFile(moniker.c_str(), &m_driver, &m_root, nullptr, nullptr)) {}
    ~Tree() {
        if (m_tree == nullptr)
            return;
        m_driver->CloseNode(m_root);
        m_driver->CloseRepository(m_tree);
    }
    Tree(Tree const &) = delete;
    Tree &operator=(Tree const &) = delete;

    struct Found {
        DString image{}; ///< its moniker; empty for none
        DString table{}; ///< the same of the first table
    };
    [[nodiscard]] Found FindFirst(StopSignal const *stop) {
        if (m_tree != nullptr && m_root != nullptr)
            Look(*m_root, kMostLevels, stop);
        return m_found;
    }

private:
    /// What lies side by side comes before what lies deeper.
    void Look(BDINode const &node, int levels, StopSignal const *stop) {
        std::vector<BDINode *> containers;
        constexpr int kAll = BDINode_Container | BDINode_Raster | BDINode_Thematic | BDINode_Table;
        void *const walk = m_driver->FindFirstChildNode(m_tree, &node, kAll);
        while (walk != nullptr && m_left > 0 && m_found.image.empty() && !IsStopSet(stop)) {
            BDINode const *const child = m_driver->FindNextChildNode(walk);
            if (child == nullptr)
                break;
            --m_left;
            if ((child->type & BDINode_Raster) != 0)
                m_found.image = child->path;
            else if ((child->type & (BDINode_Thematic | BDINode_Table)) != 0 && m_found.table.empty())
                m_found.table = child->path;
            else if ((child->type & BDINode_Container) != 0)
                containers.push_back(m_driver->CloneNode(child));
        }
        if (walk != nullptr)
            m_driver->FindClose(walk);
        for (BDINode *const container : containers) {
            if (container == nullptr)
                continue;
            if (levels > 0 && m_left > 0 && m_found.image.empty() && !IsStopSet(stop))
                Look(*container, levels - 1, stop);
            m_driver->CloseNode(container);
        }
    }

    BDIDrvr *m_driver = nullptr;
    BDINode *m_root = nullptr;
    void *m_tree;
    int m_left = kMostNodes;
    Found m_found;
};

/// Cut behind a whole character.
DString Shortened(DString text) {
    std::size_t end = std::min(text.size(), TableGlimpse::kLongest);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    text.resize(end);
    return text;
}

TableGlimpse GlimpseOf(DString const &moniker) {
    ADIFile table(DFile(moniker), "", tdFormatAccess_Read, nullptr, "");
    TableGlimpse glimpse;
    int const columns = std::min(table.GetNumCols(), TableGlimpse::kMostColumns);
    for (int col = 0; col < columns; ++col)
        glimpse.names.push_back(Shortened(table.GetColName(col)));
    for (int row = 0; columns > 0 && row < TableGlimpse::kMostRows && table.SetRow(row); ++row) {
        std::vector<DString> &cells = glimpse.rows.emplace_back();
        for (int col = 0; col < columns; ++col)
            cells.push_back(Shortened(table.GetText(col)));
    }
    return glimpse;
}

} // namespace

ThumbnailOutcome MakeThumbnail(DString const &moniker, DString const &driverId, int side, StopSignal const *stop,
                               TablePainter const &paintTable, DCanvas &picture) {
    RequestScope const scope(RequestKind::Thumbnail, [stop] { return IsStopSet(stop); });
    picture.Clear();
    DError error;
    auto const none = [&] {
        if (IsFinal(error))
            return ThumbnailOutcome::None;
        return IsStopSet(stop) || IsPassing(error) || scope.IsUnanswered() ? ThumbnailOutcome::NotNow
                                                                           : ThumbnailOutcome::None;
    };
    if (ReadThumbnail({moniker, nullptr}, driverId, stop, side, picture, &error))
        return ThumbnailOutcome::Made;
    if (IsStopSet(stop) || IsFinal(error) || IsPassing(error))
        return none();

    Tree::Found const found = Tree(moniker).FindFirst(stop);
    if (!found.image.empty() && ReadThumbnail({found.image, nullptr}, {}, stop, side, picture, &error))
        return ThumbnailOutcome::Made;
    if (!found.image.empty() || !paintTable || IsStopSet(stop))
        return none();

    TableGlimpse const glimpse = GlimpseOf(found.table.empty() ? moniker : found.table);
    if (!glimpse.names.empty() && !IsStopSet(stop))
        picture = paintTable(glimpse, std::clamp(side, 1, 1024));
    return picture.HasData() ? ThumbnailOutcome::Made : none();
}

} // namespace zelvar
