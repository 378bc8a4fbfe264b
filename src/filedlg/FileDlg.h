#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFile.h"
#include "zelvar/base/DFileFrmt.h"
#include "zelvar/base/ICheck.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/filedlg/core/FormatOffer.h"
#include "zelvar/model/DLGTemplate.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/SeriesMode.h"

#include <memory>

namespace zelvar {

class DIOPluginMngr;
struct DocumentOperation;

// The destructor is not virtual: requests live on the stack, as what they are.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// File dialog service: every "Open" and "Save" of an application runs through one of these, and gives monikers.
///
/// Made on the stack for one request: set what is special, call one of the `Open...` operations, read the monikers.
/// Each takes a mode, 0 to load and 1 to save; others pass through without a caption being set. True means that there
/// is a result; false that the user cancelled, or that the format of the operation is not there.
///
/// A copy sees the same monikers and formats; the last of the copies deletes them, so only one of them may hand a
/// moniker on. Formats may be null; those are passed over, and a list of nothing else is an empty one.
///
/// User-interface thread. From another thread an operation gets the platform's dialog, and waits.
class ZELVAR_API FileDlg { // NOLINT(cppcoreguidelines-virtual-class-destructor)
public:
    enum EFormat { FRMT_TEXT = 0, FRMT_CSV = 1, FRMT_SHAPE = 2, FRMT_HTML = 3, FRMT_SNIPPETS = 4 };

    FileDlg() = default;
    explicit FileDlg(char const *caption) { SetCaption(caption); }
    FileDlg(FileDlg const &) = default;
    FileDlg &operator=(FileDlg const &other);
    ~FileDlg();

    // The formats of the application's documents. The application assigns them at its start and owns them; one that
    // stays null disables its operation.
    static DFileFrmt *pFrmt_workspace, *pFrmt_dm_dbfile, *pFrmt_prjct, *pFrmt_clss_hrchy, *pFrmt_clss_hrchy_user,
        *pFrmt_prtcl, *pFrmt_user_prop, *pFrmt_proc, *pFrmt_wzrd, *pFrmt_paramset, *pFrmt_anly, *pFrmt_jobsqnce,
        *pFrmt_platelayout, *pFrmt_TMAlayout, *pFrmt_TMAmatch, *pFrmt_dosedilutionsec, *pFrmt_actnlib, *pFrmt_snpts,
        *pFrmt_textsttng, *pFrmt_proc_ver;

    /// What the user works on now, see `zelvar/settings/Project.h`: its folders, formats, histories and favourites come
    /// first in all requests from now on. Empty for none.
    static void SetProject(DString const &project);

    // What is special about the request.
    void SetInitFile(DString const &file) {
        m_request.initFile = file;
    } ///< a path, a folder, or a place as `zelvar ls` has it
    void SetInitFrmtId(DString const &id) { m_request.initFrmtId = id; }
    void SetCaption(char const *caption) { m_request.caption = caption == nullptr ? "" : caption; }
    void SetMultipleFiles() { m_request.multipleFiles = true; }
    void SetSeriesMode(SeriesMode mode) { m_request.seriesMode = mode; } ///< of the library's own dialog
    void SetNoChangeDir() { m_request.noChangeDir = true; } ///< the platform's dialog cannot leave its folder
    void SetDataType(unsigned type) { m_request.dataType = type; }
    void ShowOverwritePrompt(bool show) { m_request.overwritePrompt = show; }
    void SetDlgTmplId(int id) { m_request.dlgTmplId = id; }
    void SetOptions(DString const &options) { m_request.options = options; }
    void SetFormat(DFileFrmt *format) { m_request.format = format; } ///< the one to begin with; not owned

    // The formats offered, in order; not owned.
    void AddDscr(DFileFrmt *format, bool sorted);
    void RmvDscr(DFileFrmt *format);
    [[nodiscard]] DFileFrmt *GetFormat(char const *id) const;
    [[nodiscard]] DFileFrmt *GetFormatByName(char const *name) const;
    void SetFormat(EFormat format, int mode);
    /// The formats of the plug-ins, or without a manager those of the workspace's custom imports. `check` may be null.
    void AddIOPluginFilters(DIOPluginMngr *manager, int mode, ICheck<DString> const *check);

    // Documents of the application.
    bool OpenWorkspace(int mode);
    bool OpenDMDatabase(int mode);
    bool OpenTMAMatch(int mode);
    bool OpenTMAGridLayt(int mode);
    bool OpenPltLayt(int mode);
    bool OpenTextSttng(int mode);
    bool OpenDoseDilutionSec(int mode);
    bool OpenPrjct(int mode);
    bool OpenClssHrchy(int mode);
    bool OpenClssHrchyUser(int mode);
    bool OpenPrtcl(int mode);
    bool OpenUserProps(int mode);
    bool OpenProcess(int mode);
    bool OpenProcessVersion(int mode);
    bool OpenJobSqnce(int mode);
    bool OpenAnlySltn(int mode);
    bool OpenParamSet(int mode, char const *caption); ///< `caption` takes the place of both; may be null
    bool OpenWzrd();
    bool OpenActnLib(int mode); ///< a folder, given as the library file in it; can only be loaded
    bool OpenAllRuleset(int mode, bool withJobs);

    // Data. `what` names it in the caption. The manager may be null, see `AddIOPluginFilters`.
    bool OpenAll(int mode);
    bool OpenTableData(int mode, DString const &what);
    bool OpenTiffData(int mode, DString const &what);
    bool OpenXMLData(int mode, DString const &what);
    bool OpenArcSDEConnFile(int mode, DString const &what);
    bool OpenSaveCSV(char const *caption);  ///< saves
    bool OpenSaveHTML(char const *caption); ///< saves
    bool OpenRasterData(DIOPluginMngr *manager, int mode, bool multiple, bool rememberDir,
                        ICheck<DString> const *check);
    bool OpenGisObjects(DIOPluginMngr *manager, int mode, bool withStandard);
    bool OpenAttrData(DIOPluginMngr *manager, int mode, DString const &what);
    /// Loads. With a plug-in's id its first format is the one to begin with, or the one of that extension.
    bool OpenMetaData(DIOPluginMngr *manager, ICheck<DString> const *check, char const *pluginId, char const *extn);

    /// Begins at `name` in the folder that the profile remembers under `key`, or in `dir`; all may be null.
    bool Open(int mode, EFormat format, char const *name, char const *dir, char const *key);
    bool Open(int mode, char const *name, char const *dir, char const *key);
    /// With a filter text, "description|pattern|description|pattern||". A null `ext` stands for that of the initial
    /// file.
    bool OpenFileDlg(int mode, char const *filter, char const *ext, DLGTemplate dlgTemplate);

    // Results.
    [[nodiscard]] int GetNumSlctFiles() const { return static_cast<int>(m_files.size()); }
    [[nodiscard]] BDIMoniker *GetFile(int index) const; ///< stays ours; null outside
    [[nodiscard]] BDIMoniker *GetFileRmv(int index);    ///< becomes the caller's; null outside
    [[nodiscard]] std::unique_ptr<BDIMoniker> TakeFile(int index) {
        return std::unique_ptr<BDIMoniker>(GetFileRmv(index));
    }
    /// The path of the first: that of its file, for an address the address. "." if there is none.
    [[nodiscard]] DString GetPhysFile() const;
    [[nodiscard]] DFileFrmt *GetFormat() const { return m_request.format; } ///< what the user chose; may be null
    [[nodiscard]] bool GetChckReadOnly() const { return m_request.chckReadOnly; }
    [[nodiscard]] bool GetChckEditOnly() const { return m_request.chckEditOnly; }
    [[nodiscard]] DString const &GetOptions() const { return m_request.options; }
    [[nodiscard]] DataSourceItem::DataSourceType GetDataSourceType() const { return m_request.dataSourceType; }
    /// The id of the driver for the images of the chosen format: a custom import's first layer's, or the format's own.
    [[nodiscard]] DString GetImgDrvrID() const;

    /// Appends the monikers of chosen files to `out`, whose owner the caller is; `format` and `options` may be null.
    /// What is inside a container takes its place: one container alone has the user choose, several give all that is in
    /// them. False if the user did not choose.
    static bool ResolveBDI(int mode, int nodeMask, DFileFrmt const *format, DString const &title,
                           DVectorSafe<DFile> const &files, char const *ext, DVector<BDIMoniker *> &out,
                           char const *options);

protected:
    bool ShowFileDlg(int mode, char const *key, DLGTemplate dlgTemplate);
    /// Chooses and runs the dialog; puts what the user chose into `m_files`. `index` counts the filter's entries from
    /// 0.
    virtual bool OpenMFCFileDlg(int mode, char const *filter, int index, char const *ext, char const *key,
                                DLGTemplate dlgTemplate);
    bool OpenMFCFileDlgNew(int mode, char const *filter, int index, char const *ext, char const *key,
                           DLGTemplate dlgTemplate);
    bool OpenMFCFileDlgOld(int mode, char const *filter, int index, char const *ext, char const *key);

    DVector<BDIMoniker *> m_files; ///< owned, see above

private:
    void Reset();
    void DeleteFiles();
    void RemoveFormatWithId(char const *id);
    void SortData();
    [[nodiscard]] std::vector<DFileFrmt *> OfferedFormats() const;
    bool OpenDocument(DocumentOperation const &operation, int mode);
    bool OpenBuiltIn(int mode, std::initializer_list<DFileFrmt *> formats, DString const &caption,
                     char const *historyKey);
    void ChooseFormatById(char const *typeKey, char const *fallback);
    void BeginWithUsualFormat(int mode); ///< unless another one is wanted
    void RememberFormatId(char const *typeKey) const;
    /// "Load what..." in the user's language.
    [[nodiscard]] static DString LoadCaption(DString const &what);
    [[nodiscard]] static DString SaveCaption(DString const &what);
    void SetCaptionFor(int mode, DString const &load, DString const &save);
    void ReadInitFile(char const *folderKey);
    void RememberFolder(char const *folderKey) const;
    void SaveHistory(char const *key) const;

    /// What is special about the request, and what came of it beside the files.
    struct Request {
        DString initFile;
        DString initFrmtId;
        FormatOffer offer;
        DString caption;
        DFileFrmt *format = nullptr; ///< not owned
        bool multipleFiles = false;
        SeriesMode seriesMode = SeriesMode::Members;
        bool noChangeDir = false;
        unsigned dataType = ~0U; ///< `BDINodeType` bits that plug-ins are asked for
        int nodeMask = 0;        ///< `BDINodeType` bits wanted
        bool overwritePrompt = true;
        int dlgTmplId = 0;
        bool chckReadOnly = false;
        bool chckEditOnly = false;
        bool isOrdered = false; ///< by the user, in a basket
        DString options;
        DataSourceItem::DataSourceType dataSourceType = DataSourceItem::DST_UNKNOWN;
    };

    Request m_request;
    std::shared_ptr<void> m_copies = std::make_shared<char>(); ///< one for all copies that share `m_files`
};

#pragma GCC diagnostic pop

} // namespace zelvar
