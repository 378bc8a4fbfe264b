#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFile.h"
#include "zelvar/xml/XMLNode.h"

#include <boost/shared_ptr.hpp>
#include <memory>
#include <tuple>

namespace zelvar {

/// Data source repository: the connection definitions of a directory of XML files, found by name.
///
/// The records own the trees, the map points into them; copies share the trees. A short-lived local of the
/// user-interface thread.
class ZELVAR_API DataSourceRepository : public DMap<DString, XMLNode *> {
public:
    struct FileRec {
        DFile file{};
        boost::shared_ptr<XMLNode> root{};
        bool m_modified = false; ///< memory differs from disk
    };

    /// True if there is a definition then. Does nothing unless the map is empty, so it cannot reload.
    virtual bool Load() = 0;
    virtual void Clear();

    [[nodiscard]] std::size_t GetNumFiles() const { return m_files.size(); }
    /// An empty record beyond the end.
    FileRec &GetFile(int index) { return m_files[static_cast<std::size_t>(index)]; }
    /// Reads the names anew from the trees. Always 0.
    int Rebuild();
    /// Replaces the definitions of that name in the file by `node`, which the tree takes over, also from another tree
    /// or another place in this one. False, and nothing done, for a node that is none, has no name, or is the root of a
    /// file. The map is empty until `Rebuild`.
    bool AddDataSource(int fileIndex, XMLNode *node);
    /// The same; a node that is refused is deleted.
    bool AddDataSource(int fileIndex, std::unique_ptr<XMLNode> node) {
        bool const added = AddDataSource(fileIndex, node.get());
        if (added)
            std::ignore = node.release();
        return added;
    }
    /// Deletes the node. The map is empty until `Rebuild`.
    bool RemoveAndDeleteDataSource(int fileIndex, XMLNode *node);
    /// Name of the first definition, by name, with that URL; empty if there is none.
    [[nodiscard]] DString FindByUrl(DString const &url) const;

    /// The definition's URL with its parameters filled in; empty if it has no "Parameters" or they do not fit.
    static DString GetURLFromNode(XMLNode const *node);
    /// Fills "${key}" in `url` from "key=value;...". False at a placeholder that is broken or unknown, and where values
    /// refer to each other in a circle; `url` then stays as it has become so far.
    static bool ApplyParams(DString &url, DString const &params);

protected:
    bool LoadFromXMLFile(char const *path, bool createIfMissing);

    DVectorSafe<FileRec> m_files;

private:
    [[nodiscard]] FileRec *FileOf(XMLNode const &node);
    int ParseXML(XMLNode *root);
};

} // namespace zelvar
