#include "zelvar/filedlg/CustomImportFormats.h"

#include "zelvar/base/DFile.h"
#include "zelvar/data/CustImport.h"

#include <memory>

namespace zelvar {

namespace {

template <class Visit>
void ForEachDefinition(Visit &&visit) {
    DataSchm const &scheme = *Wksp::Instance()->GetDataSchm();
    for (int i = 0; i < scheme.GetNumCustImport(); ++i) {
        CustImport const *const customImport = scheme.GetCustImport(i);
        if (CustImportDefinition const *definition = customImport == nullptr ? nullptr : customImport->GetDefinition())
            visit(*definition);
    }
}

/// Without the stars at its end, unless there is nothing else.
DString ExtensionOfPattern(DString const &pattern) {
    DString extension = DFile(pattern).GetPhysFileExtn();
    while (extension.size() > 1 && extension.ends_with('*'))
        extension.pop_back();
    return extension;
}

/// The layers' driver where all that name one agree.
DString DriverOfLayers(DVector<DString> const &layers) {
    DString driver;
    for (DString const &layer : layers) {
        if (!driver.empty() && !layer.empty() && layer != driver)
            return {};
        driver = driver.empty() ? layer : driver;
    }
    return driver;
}

} // namespace

void AppendCustomImports(DList<DFileFrmt *> &formats) {
    ForEachDefinition([&formats](CustImportDefinition const &definition) {
        DString const extension = ExtensionOfPattern(CustImport::GetFilePttr(definition.images, ""));
        auto format =
            std::make_unique<DFileFrmt>(definition.driver.c_str(), definition.name.c_str(), ("*." + extension).c_str());
        format->SetSingleFileConnector(definition.singleFile);
        format->SetDriver(definition.driver.empty() ? DriverOfLayers(definition.layers) : definition.driver);
        formats.push_back(format.release());
    });
}

DString ImageDriverOf(DFileFrmt const &format) {
    DString driver = format.GetID();
    bool found = false;
    ForEachDefinition([&](CustImportDefinition const &definition) {
        if (found || definition.name != format.GetName() || definition.layers.empty())
            return;
        driver = definition.layers.front();
        found = true;
    });
    return driver;
}

} // namespace zelvar
