#include "zelvar/base/DFile.h"
#include "zelvar/settings/ZelRegistry.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/xml/XMLNode.h"

#include <memory>
#include <tuple>
#include <utility>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("settings");

int Export(DString const &file, DString const &key) {
    SettingsStore const &store = SettingsStore::Instance();
    ZelRegistry registry(0, 1);
    std::unique_ptr<XMLNode> snapshot;
    bool const isRead = store.IsWhole() && store.ReadTogether([&] {
        if (registry.Open(key.c_str()))
            snapshot.reset(registry.ToXMLNode());
    });
    if (!isRead)
        return Failure("the settings cannot be read whole");
    if (snapshot == nullptr)
        return Failure("there is no key '" + key + "'");
    // What could not be read again is no export.
    DString reason;
    DString const text = std::exchange(snapshot, nullptr)->SaveText(&reason);
    if (text.empty() || !XMLNode().LoadText(text, &reason))
        return Failure("the settings cannot be written as XML: " + reason);
    return DFile(file).WriteAtomically(text) ? kDone : Failure("cannot write '" + file + "'");
}

int Import(DString const &file) {
    XMLNode snapshot;
    DString reason;
    if (!snapshot.Load(DFile(file), &reason))
        return Failure(reason);
    if (!ZelRegistry::IsSnapshot(snapshot, &reason))
        return Failure(file + " is no export of settings: " + reason);
    std::ignore = SettingsStore::Instance().IsWhole(); // a damaged file is set aside before anything goes into it
    ZelRegistry registry(0, 0);
    bool const done = SettingsStore::Instance().Transact([&] { return registry.FromXMLNode(&snapshot); });
    return done ? kDone : Failure("cannot write the settings; they are as they were");
}

} // namespace

int RunSettings(std::vector<DString> const &words) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    DString const &action = arguments->words[0];
    DString const &file = arguments->words[1];
    if (action == "export")
        return Export(file, arguments->Value("--key"));
    if (action == "import" && !arguments->values.contains("--key"))
        return Import(file);
    return UsageError(kSpec, action == "import" ? "an import has the keys of its file" : "export or import");
}

} // namespace zelvar::tool
