#include "zelvar/tool/Kinds.h"

#include "zelvar/data/BDINode.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/filedlg/FileDlg.h"

#include <algorithm>

namespace zelvar::tool {

namespace {

DIOPluginMngr *Plugins() { return DIOPluginMngr::Instance(); }

// clang-format off
constexpr Kind kKinds[] = {
    {"raster", true, [](FileDlg &request, int mode, bool multiple) {
         request.SetDataType(BDINode_Raster);
         return request.OpenRasterData(Plugins(), mode, multiple, true, nullptr); }},
    {"thematic", true, [](FileDlg &request, int mode, bool) {
         request.SetDataType(BDINode_Raster | BDINode_Thematic);
         return request.OpenGisObjects(Plugins(), mode, true); }},
    {"attributes", true, [](FileDlg &request, int mode, bool) {
         request.SetDataType(BDINode_Table);
         return request.OpenAttrData(Plugins(), mode, "Attributes"); }},
    {"metadata", false, [](FileDlg &request, int, bool) {
         request.SetDataType(BDINode_Table);
         return request.OpenMetaData(Plugins(), nullptr, nullptr, nullptr); }},
    {"table", true, [](FileDlg &request, int mode, bool) { return request.OpenTableData(mode, "Table"); }},
    {"tiff", true, [](FileDlg &request, int mode, bool) { return request.OpenTiffData(mode, "TIFF Image"); }},
    {"xml", true, [](FileDlg &request, int mode, bool) { return request.OpenXMLData(mode, "XML File"); }},
    {"project", true, [](FileDlg &request, int mode, bool) { return request.OpenPrjct(mode); }},
    {"workspace", true, [](FileDlg &request, int mode, bool) { return request.OpenWorkspace(mode); }},
    {"process", true, [](FileDlg &request, int mode, bool) { return request.OpenProcess(mode); }},
    {"ruleset", true, [](FileDlg &request, int mode, bool) { return request.OpenAllRuleset(mode, true); }},
    {"solution", true, [](FileDlg &request, int mode, bool) { return request.OpenAnlySltn(mode); }},
    {"all", true, [](FileDlg &request, int mode, bool) { return request.OpenAll(mode); }},
};
// clang-format on

} // namespace

Kind const *FindKind(DString const &name) {
    auto const *const found =
        std::find_if(std::begin(kKinds), std::end(kKinds), [&](Kind const &kind) { return name == kind.name; });
    return found == std::end(kKinds) ? nullptr : found;
}

ApplicationFormats::ApplicationFormats() {
    FileDlg::pFrmt_workspace = &workspace;
    FileDlg::pFrmt_prjct = &project;
    FileDlg::pFrmt_proc = &process;
    FileDlg::pFrmt_prtcl = &protocol;
    FileDlg::pFrmt_anly = &solution;
    FileDlg::pFrmt_jobsqnce = &jobs;
}

} // namespace zelvar::tool
