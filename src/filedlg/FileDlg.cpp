// The request itself: its formats, its result, and the road to a dialog. The operations stand in FileDlgDocuments.cpp
// and FileDlgData.cpp, the dialogs in FileDlgDialogs.cpp.
#include "zelvar/filedlg/FileDlg.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/filedlg/CustomImportFormats.h"
#include "zelvar/filedlg/RememberedFolders.h"
#include "zelvar/filedlg/core/FilterBuffer.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/settings/Project.h"

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

DString Text(char const *text) { return text == nullptr ? DString() : DString(text); }

void WarnOfNoFormats() {
    // The function is named in the lookups as well: users and their support know the text so.
    Report::UserWarning("FileDlg::ShowFileDlg: no file types available");
}

/// The one of the process, as its size tells: no two dialogs use it at a time.
FilterBuffer &SharedFilterBuffer() {
    static FilterBuffer buffer;
    return buffer;
}

/// How many of the formats there is room for.
int FillFilter(FilterBuffer &buffer, std::vector<DFileFrmt *> const &formats) {
    buffer.InitFilter();
    std::size_t count = 0;
    while (count < formats.size() && buffer.Add(*formats[count]))
        ++count;
    buffer.FinishFilter();
    if (count < formats.size())
        Report::TraceMessage(Report::kTraceOpen, "a file dialog has no room for %zu of %zu formats",
                             formats.size() - count, formats.size());
    return static_cast<int>(count);
}

/// The file to begin at: in the folder that the profile remembers, or in `dir`.
DString InitialPath(char const *name, char const *dir, char const *key) {
    DString folder = ReadSetting(key, Text(dir));
    if (!folder.empty() && !PathStyle::Native().IsSeparator(folder.back()))
        folder += PathStyle::Native().separator;
    return folder + Text(name);
}

} // namespace

FileDlg::~FileDlg() { DeleteFiles(); }

FileDlg &FileDlg::operator=(FileDlg const &other) {
    if (this == &other)
        return *this;
    DeleteFiles();
    m_files = other.m_files;
    m_copies = other.m_copies;
    m_request = other.m_request;
    return *this;
}

// ------------------------------------------------------------------------------------------------------ the result

void FileDlg::DeleteFiles() {
    if (m_copies.use_count() > 1)
        m_copies = std::make_shared<char>(); // they stay with the other copies
    else
        for (; !m_files.empty(); m_files.pop_back())
            delete m_files.back();
    m_files.clear();
}

BDIMoniker *FileDlg::GetFile(int index) const {
    return index >= 0 && index < GetNumSlctFiles() ? m_files[static_cast<std::size_t>(index)] : nullptr;
}

BDIMoniker *FileDlg::GetFileRmv(int index) {
    BDIMoniker *const file = GetFile(index);
    if (index >= 0 && index < GetNumSlctFiles())
        m_files.erase(m_files.begin() + index);
    return file;
}

DString FileDlg::GetPhysFile() const {
    BDIMoniker const *const file = GetFile(0);
    if (file == nullptr)
        return ".";
    DString const path = file->GetPathOnDisk();
    return path.empty() ? file->GetSource() : path;
}

void FileDlg::SortData() {
    if (std::exchange(m_request.isOrdered, false))
        return;
    // Looking for a name may take a look at the disk.
    std::vector<std::pair<DString, BDIMoniker *>> named;
    named.reserve(m_files.size());
    for (BDIMoniker *file : m_files)
        named.emplace_back(file == nullptr ? DString() : file->GetDisplayName(), file);
    std::stable_sort(named.begin(), named.end(), [](auto const &a, auto const &b) { return a.first < b.first; });
    std::transform(named.begin(), named.end(), m_files.begin(), [](auto const &entry) { return entry.second; });
}

DString FileDlg::GetImgDrvrID() const {
    return m_request.format == nullptr ? DString() : ImageDriverOf(*m_request.format);
}

// ----------------------------------------------------------------------------------------------------- the formats

void FileDlg::Reset() {
    DeleteFiles();
    if (m_request.offer.Owns(m_request.format))
        m_request.format = nullptr;
    m_request.offer.Clear();
}

std::vector<DFileFrmt *> FileDlg::OfferedFormats() const { return m_request.offer.Offered(); }

void FileDlg::AddDscr(DFileFrmt *format, bool sorted) { m_request.offer.Add(format, sorted); }

void FileDlg::RmvDscr(DFileFrmt *format) { m_request.offer.Remove(format); }

void FileDlg::RemoveFormatWithId(char const *id) { m_request.offer.RemoveId(id); }

DFileFrmt *FileDlg::GetFormat(char const *id) const {
    if (m_request.offer.IsEmpty())
        WarnOfNoFormats();
    return id == nullptr ? nullptr : m_request.offer.ById(id);
}

DFileFrmt *FileDlg::GetFormatByName(char const *name) const {
    if (m_request.offer.IsEmpty())
        WarnOfNoFormats();
    return name == nullptr ? nullptr : m_request.offer.ByName(name);
}

void FileDlg::SetFormat(EFormat format, int mode) {
    BuiltInFormats &known = BuiltInFormats::Instance();
    struct Row {
        DVector<DFileFrmt *> load;
        DVector<DFileFrmt *> save;
    };
    Row row;
    switch (format) {
    case FRMT_TEXT:
        row = {{&known.frmt_txt, &known.frmt_dbf, &known.frmt_csv, &known.frmt_all},
               {&known.frmt_txt, &known.frmt_dbf}};
        break;
    case FRMT_CSV:
        row = {{&known.frmt_csv, &known.frmt_tcsv}, {&known.frmt_csv, &known.frmt_tcsv, &known.frmt_txt}};
        break;
    case FRMT_SHAPE:
        row = {{&known.frmt_shp}, {&known.frmt_shp}};
        break;
    case FRMT_HTML:
        row = {{&known.frmt_html}, {&known.frmt_html}};
        break;
    case FRMT_SNIPPETS:
        row = {{&known.frmt_snippets}, {&known.frmt_snippets}};
        break;
    }
    if (row.load.empty())
        return;
    m_request.format = row.load.front();
    DVector<DFileFrmt *> &wanted = mode == 1 ? row.save : row.load;
    if (mode != 0 && mode != 1)
        wanted.resize(std::min<std::size_t>(wanted.size(), 2));
    for (DFileFrmt *offered : wanted)
        AddDscr(offered, false);
}

// -------------------------------------------------------------------------------------------- the road to a dialog

bool FileDlg::ShowFileDlg(int mode, char const *key, DLGTemplate dlgTemplate) {
    DeleteFiles();
    std::vector<DFileFrmt *> const offered = OfferedFormats();
    if (offered.empty()) {
        WarnOfNoFormats();
        return false;
    }
    if (m_request.format == nullptr) {
        DFileFrmt *const same = m_request.offer.ByExtension(StripExtn(m_request.initFile));
        m_request.format = same == nullptr ? offered.front() : same;
    }
    auto const current = std::find_if(offered.begin(), offered.end(), [this](DFileFrmt const *format) {
        return format->GetName() == m_request.format->GetName();
    });
    int const position = static_cast<int>(current - offered.begin());
    FilterBuffer &buffer = SharedFilterBuffer();
    int const index = position < FillFilter(buffer, offered) ? position : 0;
    // Both texts are copies: what runs while the dialog is open may ask for another one.
    DString const filter = buffer.Text();
    DString const extension = m_request.format->GetExtn();
    if (!OpenMFCFileDlg(mode, filter.c_str(), index, extension.c_str(), key, dlgTemplate))
        return false;
    SortData();
    return true;
}

bool FileDlg::OpenFileDlg(int mode, char const *filter, char const *ext, DLGTemplate dlgTemplate) {
    DString const text = Text(filter);
    int const index = IndexOfPattern(text, ext == nullptr ? StripExtn(m_request.initFile) : DString(ext));
    DeleteFiles();
    if (!OpenMFCFileDlg(mode, text.c_str(), index, ext, "", dlgTemplate))
        return false;
    SortData();
    return true;
}

bool FileDlg::Open(int mode, EFormat format, char const *name, char const *dir, char const *key) {
    SetFormat(format, mode);
    m_request.initFile = InitialPath(name, dir, key);
    if (!OpenAll(mode))
        return false;
    RememberFolder(key);
    return true;
}

bool FileDlg::Open(int mode, char const *name, char const *dir, char const *key) {
    m_request.initFile = InitialPath(name, dir, key);
    // The file's own extension comes ahead of "All Files".
    DString const extension = AnswersSoon(m_request.initFile)
                                  ? InitialMoniker(m_request.initFile, mode).GetFrmtExtn(false)
                                  : DFile(m_request.initFile).GetPhysFileExtn();
    DFileFrmt own("", "", ("*." + extension).c_str());
    AddDscr(&own, false);
    bool const opened = OpenAll(mode);
    RmvDscr(&own);
    if (m_request.format == &own)
        m_request.format = nullptr;
    if (opened)
        RememberFolder(key);
    return opened;
}

void FileDlg::SetProject(DString const &project) { zelvar::SetProject(project); }

void FileDlg::ReadInitFile(char const *folderKey) {
    if (m_request.initFile.empty() && folderKey != nullptr)
        m_request.initFile = ReadSetting(folderKey, ".");
}

void FileDlg::RememberFolder(char const *folderKey) const {
    if (BDIMoniker const *const file = GetFile(0); file != nullptr)
        WriteFolder(folderKey, DFile(file->GetPathOnDisk()).GetPhysFilePath());
}

void FileDlg::SaveHistory(char const *key) const {
    if (key != nullptr && *key != '\0')
        DfltFldrs::Instance()->SaveDirHist(key, DFile(GetPhysFile()).GetPhysFilePath());
}

} // namespace zelvar
