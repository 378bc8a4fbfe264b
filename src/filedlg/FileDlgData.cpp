// The operations on data: their formats come from plug-ins.
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/filedlg/CustomImportFormats.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/filedlg/RememberedFolders.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kLoad = 0;
constexpr int kSave = 1;

constexpr char kRasterFolder[] = "Raster Files";
constexpr char kRasterType[] = "Raster File Type";
constexpr char kThematicFolder[] = "Projects";
constexpr char kThematicType[] = "Labeled Raster File Type";
constexpr char kAttributeFolder[] = "ThematicFolders"; // the text of the history key is the key of the folder, too
constexpr char kAttributeType[] = "Labeled Attribute File Type";
constexpr char kMetadataType[] = "MetaData File Type";

using OwnedFormats = std::vector<std::unique_ptr<DFileFrmt>>;

OwnedFormats FormatsOf(DIOPlugin &plugin, unsigned dataType, ICheck<DString> const *check) {
    DList<DFileFrmt *> formats;
    plugin.BuildFrmtList(kLoad, dataType, check, formats);
    OwnedFormats owned;
    owned.reserve(formats.size());
    for (DFileFrmt *format : formats)
        if (format != nullptr)
            owned.emplace_back(format);
    return owned;
}

/// The id of the format to begin with, by the plug-in that the caller wants; `fallback` without one.
DString FormatOfPlugin(DIOPluginMngr &manager, DString const &name, DString const &extension, unsigned dataType,
                       ICheck<DString> const *check, DString const &fallback) {
    for (DIOPlugin *plugin : manager.Plugins()) {
        if (plugin->GetName() != name)
            continue;
        OwnedFormats const formats = FormatsOf(*plugin, dataType, check);
        auto wanted = formats.begin();
        if (!extension.empty())
            wanted = std::find_if(formats.begin(), formats.end(),
                                  [&](auto const &format) { return HasMask(*format, "*." + extension); });
        if (wanted == formats.end())
            wanted = formats.begin();
        return wanted == formats.end() ? fallback : (*wanted)->GetID();
    }
    return fallback;
}

} // namespace

void FileDlg::AddIOPluginFilters(DIOPluginMngr *manager, int mode, ICheck<DString> const *check) {
    DList<DFileFrmt *> formats;
    if (manager != nullptr)
        manager->BuildFrmtList(mode, m_request.dataType, check, formats);
    else
        AppendCustomImports(formats);
    m_request.offer.TakeOver(formats, mode == kLoad);
}

bool FileDlg::OpenRasterData(DIOPluginMngr *manager, int mode, bool multiple, bool rememberDir,
                             ICheck<DString> const *check) {
    Reset();
    m_request.nodeMask = BDINode_Raster;
    if (mode == kLoad)
        AddDscr(&BuiltInFormats::Instance().frmt_all, false);
    AddIOPluginFilters(manager, mode, check);
    if (mode == kSave) {
        if (m_request.caption.empty())
            m_request.caption = Translated("Export Image Layer...");
        RemoveFormatWithId("ASC"); // it is not written as an image
    }
    ReadInitFile(kRasterFolder);
    if (!m_request.offer.IsEmpty()) {
        m_request.format = m_request.initFrmtId.empty() ? GetFormatByName(ReadSetting(kRasterType, "TIF").c_str())
                                                        : GetFormat(m_request.initFrmtId.c_str());
        if (m_request.format == nullptr && m_request.initFrmtId.empty())
            m_request.format = GetFormatByName("STD_TIF");
    }
    BeginWithUsualFormat(mode);
    if (multiple)
        SetMultipleFiles();
    if (m_request.caption.empty())
        SetCaptionFor(
            mode, m_request.multipleFiles ? Translated("Import Image Layers...") : Translated("Import Image Layer..."),
            Translated("Export Image Layer..."));
    if (!ShowFileDlg(mode, "ImageFolders", DT_DATA))
        return false;
    if (rememberDir)
        RememberFolder(kRasterFolder);
    if (m_request.format != nullptr)
        WriteSetting(kRasterType, m_request.format->GetName());
    return true;
}

bool FileDlg::OpenGisObjects(DIOPluginMngr *manager, int mode, bool withStandard) {
    BuiltInFormats &known = BuiltInFormats::Instance();
    Reset();
    m_request.nodeMask = BDINode_Raster | BDINode_Thematic;
    if (mode == kLoad)
        AddDscr(&known.frmt_all, false);
    AddIOPluginFilters(manager, mode, nullptr);
    if (mode == kSave)
        RemoveFormatWithId("ASC");
    if (withStandard) {
        AddDscr(&known.frmt_shp, false);
        AddDscr(&known.frmt_aperio, false);
        if (BDIDrvrMngr::Instance()->GetDrvr(known.frmt_das.GetID().c_str()) != nullptr)
            AddDscr(&known.frmt_das, false);
    }
    ReadInitFile(kThematicFolder);
    ChooseFormatById(kThematicType, "TIF");
    BeginWithUsualFormat(mode);
    if (m_request.caption.empty())
        SetCaptionFor(mode,
                      m_request.multipleFiles ? Translated("Add Thematic Layers...")
                                              : Translated("Import Thematic Layer..."),
                      Translated("Export Thematic Layer..."));
    if (!ShowFileDlg(mode, "ThematicFolders", DT_DATA))
        return false;
    RememberFormatId(kThematicType);
    RememberFolder(kThematicFolder);
    return true;
}

bool FileDlg::OpenAttrData(DIOPluginMngr *manager, int mode, DString const &what) {
    BuiltInFormats &known = BuiltInFormats::Instance();
    Reset();
    m_request.nodeMask = BDINode_Table;
    if (mode == kLoad)
        AddDscr(&known.frmt_all, false);
    AddIOPluginFilters(manager, mode, nullptr);
    RemoveFormatWithId("IMG");
    if (mode == kLoad)
        AddDscr(&known.frmt_txt, false);
    ReadInitFile(kAttributeFolder);
    ChooseFormatById(kAttributeType, "CSV");
    BeginWithUsualFormat(mode);
    SetCaptionFor(mode, LoadCaption(what), SaveCaption(what));
    if (!ShowFileDlg(mode, "ThematicFolders", DT_DATA))
        return false;
    RememberFormatId(kAttributeType);
    RememberFolder(kAttributeFolder);
    return true;
}

bool FileDlg::OpenMetaData(DIOPluginMngr *manager, ICheck<DString> const *check, char const *pluginId,
                           char const *extn) {
    Reset();
    m_request.nodeMask = BDINode_Table;
    AddIOPluginFilters(manager, kLoad, check);
    DString wanted = m_request.initFrmtId.empty() ? ReadSetting(kMetadataType, "INI") : m_request.initFrmtId;
    if (manager != nullptr && pluginId != nullptr && *pluginId != '\0')
        wanted = FormatOfPlugin(*manager, pluginId, extn == nullptr ? "" : extn, m_request.dataType, check, wanted);
    if (!wanted.empty() && !m_request.offer.IsEmpty())
        m_request.format = GetFormat(wanted.c_str());
    if (m_request.caption.empty())
        m_request.caption = Translated("Import MetaData...");
    if (!ShowFileDlg(kLoad, "ImageFolders", DT_DATA))
        return false;
    if (m_request.format != nullptr)
        WriteSetting(kMetadataType, m_request.format->GetID());
    return true;
}

void FileDlg::ChooseFormatById(char const *typeKey, char const *fallback) {
    // Without formats the user is told once, by the dialog's function.
    if (m_request.offer.IsEmpty())
        return;
    DString const id = m_request.initFrmtId.empty() ? ReadSetting(typeKey, fallback) : m_request.initFrmtId;
    m_request.format = GetFormat(id.c_str());
}

void FileDlg::BeginWithUsualFormat(int mode) {
    BuiltInFormats &known = BuiltInFormats::Instance();
    if (m_request.format == nullptr)
        m_request.format = m_request.offer.Usual(mode == kSave, StripExtn(m_request.initFile), known.frmt_all,
                                                 known.frmt_tif.GetExtn());
}

void FileDlg::RememberFormatId(char const *typeKey) const {
    if (m_request.format != nullptr && m_request.format != &BuiltInFormats::Instance().frmt_all)
        WriteSetting(typeKey, m_request.format->GetID());
}

} // namespace zelvar
