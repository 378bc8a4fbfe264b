#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DString.h"

#include <memory>
#include <utility>

namespace zelvar {

/// What a custom import reads, as its author wrote it down.
struct CustImportDefinition {
    DString name;            ///< what users choose it by
    DString driver;          ///< id of the driver; empty where the layers tell theirs
    DVector<DString> images; ///< patterns of the files, "{...}" stands for what differs between them
    DVector<DString> layers; ///< ids of the layers' drivers, in order; may be empty
    bool singleFile = false; ///< one file holds all of it
};

/// Custom import: a set of files that a user has declared to be one piece of data.
class ZELVAR_API CustImport {
public:
    explicit CustImport(CustImportDefinition definition)
        : m_definition(std::make_unique<CustImportDefinition>(std::move(definition))) {}

    /// Null for an import whose definition could not be read.
    [[nodiscard]] CustImportDefinition const *GetDefinition() const { return m_definition.get(); }
    /// The pattern of the first image with `text` in place of what stands in braces; an empty text stands for anything,
    /// "*". Empty without an image.
    [[nodiscard]] static DString GetFilePttr(DVector<DString> const &images, DString const &text);

    /// An import without a definition.
    CustImport() = default;

private:
    std::unique_ptr<CustImportDefinition> m_definition;
};

/// Data scheme of a workspace: its custom imports, in order. Filled by the application.
class ZELVAR_API DataSchm {
public:
    [[nodiscard]] int GetNumCustImport() const { return static_cast<int>(m_imports.size()); }
    /// Null for an index outside.
    [[nodiscard]] CustImport const *GetCustImport(int index) const;
    void Add(std::unique_ptr<CustImport> customImport) { m_imports.push_back(std::move(customImport)); }
    void Clear() { m_imports.clear(); }

private:
    std::vector<std::unique_ptr<CustImport>> m_imports;
};

/// Workspace of the application. User-interface thread.
class ZELVAR_API Wksp {
public:
    static Wksp *Instance();
    [[nodiscard]] DataSchm *GetDataSchm() { return &m_scheme; }

private:
    Wksp() = default;
    DataSchm m_scheme;
};

} // namespace zelvar
