#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/wire/SharedMemory.h"
#include "zelvar/reader/OpenImages.h"
#include "zelvar/reader/OpenTables.h"
#include "zelvar/reader/OpenTrees.h"

#include <memory>
#include <optional>

#include <Messages_generated.h>

namespace zelvar::reader {

/// Does what requests ask for, with the drivers of this process, and says what came of it. The requests are not
/// trusted: whatever they hold, the worst answer is `Failed`.
///
/// One thread makes, uses and ends it: handles of drivers belong to the thread that opened them.
class RequestHandler {
public:
    using Answer = wire::AnswerBodyUnion;

    /// `stop` is set from any thread when the request under way should end; it outlives this.
    explicit RequestHandler(StopSignal const &stop) : m_stop(&stop), m_images(stop), m_tables(stop) {}

    /// `file` came with the request; null for none. Nothing is yielded for requests that are not answered. Throws what
    /// drivers throw.
    std::optional<Answer> Handle(wire::RequestBodyUnion const &body, std::unique_ptr<FileDescriptor> file);

    /// The path or moniker of the file that a request will touch; null if it names none.
    [[nodiscard]] static DString const *FileOf(wire::RequestBodyUnion const &body);
    [[nodiscard]] static Answer Failure(DString reason);

private:
    static Answer ListDrivers();
    Answer ProbeTrees(wire::ProbeTreesT const &asked);
    Answer ProbeFiles(wire::ProbeFilesT const &asked);
    static Answer ProbeImage(wire::ProbeImageT const &asked);
    Answer FindOwned(wire::FindOwnedT const &asked) const;
    static Answer StampFile(wire::StampFileT const &asked);
    Answer OpenTree(wire::OpenTreeT const &asked);
    Answer FindNode(wire::FindNodeT const &asked);
    Answer ListChildren(wire::ListChildrenT const &asked);
    Answer OpenImage(wire::OpenImageT const &asked);
    Answer DescribeChannel(wire::DescribeChannelT const &asked);
    Answer GetAttribute(wire::GetAttributeT const &asked);
    Answer ReadPixels(wire::ReadPixelsT const &asked);
    Answer OpenTable(wire::OpenTableT const &asked);
    Answer ReadRows(wire::ReadRowsT const &asked);

    /// Those of the drivers that read the file; nothing if it was stopped.
    [[nodiscard]] std::optional<wire::ProbedT> Probe(DString const &path, std::vector<DString> const &drivers) const;
    Answer WalkChildren(OpenTrees::Tree &tree, BDINode const &parent, int mask);
    OpenTrees::Tree *TreeOf(std::unique_ptr<wire::TreeSpecT> const &spec, DString &reason);
    OpenImages::Image *ImageOf(std::unique_ptr<wire::ImageSpecT> const &spec, DString &reason);
    OpenTables::Table *TableOf(std::unique_ptr<wire::TableSpecT> const &spec, DString &reason);
    [[nodiscard]] bool IsStopped() const { return m_stop->load(); }

    StopSignal const *m_stop;
    OpenTrees m_trees;
    OpenImages m_images;
    OpenTables m_tables;
    std::unique_ptr<wire::SharedMemory> m_pixels;
};

} // namespace zelvar::reader
