#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/reader/ImageRequests.h"
#include "zelvar/reader/ProbeRequests.h"
#include "zelvar/reader/TableRequests.h"
#include "zelvar/reader/TreeRequests.h"

#include <memory>
#include <optional>

namespace zelvar::reader {

/// Does what requests ask for, with the drivers of this process, and says what came of it. The requests are not
/// trusted: whatever they hold, the worst answer is `Failed`.
///
/// One thread makes, uses and ends it: handles of drivers belong to the thread that opened them.
class RequestHandler {
public:
    /// `stop` is set from any thread when the request under way should end; it outlives this.
    /// So does `progress`, which is told how far a long request has come; null for nobody who wants to know.
    explicit RequestHandler(StopSignal const &stop, TableRequests::Progress *progress = nullptr)
        : m_stop(stop), m_probes(stop), m_trees(stop), m_images(stop), m_tables(stop, progress) {}

    /// `file` came with the request; null for none. Nothing is yielded for requests that are not answered. Throws what
    /// drivers throw.
    std::optional<Answer> Handle(wire::RequestBodyUnion const &body, std::unique_ptr<FileDescriptor> file);

    /// The path or moniker of the file that a request will touch; null if it names none.
    [[nodiscard]] static DString const *FileOf(wire::RequestBodyUnion const &body);

private:
    [[nodiscard]] Answer ReadCertificate() const;

    StopSignal const &m_stop;
    ProbeRequests m_probes;
    TreeRequests m_trees;
    ImageRequests m_images;
    TableRequests m_tables;
};

} // namespace zelvar::reader
