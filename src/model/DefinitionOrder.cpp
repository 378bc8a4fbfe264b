#include "zelvar/model/DefinitionOrder.h"

#include "zelvar/base/Containers.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char kSection[] = "OpenFileDialog";
constexpr char kKey[] = "Connections";

bool Write(std::vector<DString> const &names) {
    DVectorSafe<DString> stored;
    for (DString const &name : names)
        stored.push_back(name);
    return DUserCnfg(kSection).WriteStringVec(kKey, stored);
}

} // namespace

std::vector<DString> DefinitionOrder::Read() {
    DVectorSafe<DString> stored;
    DUserCnfg(kSection).ReadStringVec(kKey, stored);
    return {stored.begin(), stored.end()};
}

void DefinitionOrder::Keep(std::vector<DString> const &names) {
    SettingsStore::Instance().TransactSoon([names] { return Write(names); });
}

void DefinitionOrder::Rename(DString const &name, DString const &newName) {
    SettingsStore::Instance().TransactSoon([name, newName] {
        std::vector<DString> names = Read();
        auto const at = std::find(names.begin(), names.end(), name);
        if (at == names.end())
            return false;
        *at = newName;
        return Write(names);
    });
}

} // namespace zelvar
