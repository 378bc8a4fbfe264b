#include "zelvar/xml/XMLNode.h"

#include <cstdint>
#include <cstdlib>

// Whatever loads is saved and loaded again to the same tree, and trees take changes.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    using namespace zelvar;
    std::string_view const text(reinterpret_cast<char const *>(data), size);
    XMLNode root("before");
    DString error;
    if (!root.LoadText(text, &error)) {
        if (error.empty() || root.GetName() != "before")
            std::abort();
        return 0;
    }
    DString const saved = root.SaveText();
    XMLNode again;
    // Names that the parser takes and XML does not know cannot be saved.
    if (!saved.empty() && (!again.LoadText(saved) || again.SaveText() != saved || root.Copy()->SaveText().empty()))
        std::abort();
    for (XMLNode::ChldItr child(root); child.IsValid();) {
        child.Get()->SetText(child.Get()->GetText() + "x");
        if (child.Get()->GetChldCount() % 2 == 0)
            child.Rmv();
        else
            child.Next();
    }
    return 0;
}
