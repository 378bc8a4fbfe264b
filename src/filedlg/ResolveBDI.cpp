#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/filedlg/MonikerResolver.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/MainWindow.h"

#include <optional>

namespace zelvar {

namespace {

/// Lets the user stop what drivers do on the windows' thread; on another thread they are waited for.
class StoppableRequest {
public:
    StoppableRequest() {
        if (platform::IsWindowThread())
            m_watch.emplace();
        m_scope.emplace(RequestKind::List, [this] { return m_watch && m_watch->IsPressed(); });
    }

private:
    std::optional<platform::EscapeWatch> m_watch;
    std::optional<RequestScope> m_scope;
};

/// The driver's text goes behind a "?", or behind what is there.
DString WithOptions(DString path, char const *options) {
    if (options != nullptr && *options != '\0')
        path += (path.find('?') == DString::npos ? "?" : "&") + DString(options);
    return path;
}

/// Empty if the user chose nothing.
DVectorSafe<DString> AskForNodes(BDIMoniker const &file, int nodeMask, DString const &title, bool multiSelect) {
    CBDISelectorDlg dialog(file.GetDrvr(), file.GetText().c_str(), static_cast<unsigned>(nodeMask), title.c_str(),
                           multiSelect, nullptr);
    return dialog.DoModal() == QDialog::Accepted ? dialog.m_results : DVectorSafe<DString>();
}

} // namespace

bool FileDlg::ResolveBDI(int mode, int nodeMask, DFileFrmt const *format, DString const &title,
                         DVectorSafe<DFile> const &files, char const *ext, DVector<BDIMoniker *> &out,
                         char const *options) {
    BDIDrvr *const driver =
        format == nullptr ? nullptr : BDIDrvrMngr::Instance()->FindDriverByFrmt(format->GetID().c_str());
    bool const isChosenToWrite = mode != 0;
    for (DFile const &file : files)
        out.push_back(new BDIMoniker(
            isChosenToWrite ? BDIMoniker::OfPath(file.GetMoniker(), options == nullptr ? "" : options, driver)
                            : BDIMoniker(WithOptions(file.GetMoniker(), options), driver)));

    MonikerResolver resolver(nodeMask, out);
    bool asks = false;
    if (mode == 0) {
        StoppableRequest const request;
        asks = resolver.HoldsAChoice();
        if (out.size() == 1 && !asks)
            resolver.AddDriverOptions();
        else if (!asks)
            resolver.ExpandAll();
    }
    if (asks) {
        // A connection file leads to one layer.
        bool const isConnection = EqualNoCase(ext == nullptr ? "" : ext, BuiltInFormats::Instance().frmt_das.GetExtn());
        DVectorSafe<DString> const chosen = AskForNodes(*out.front(), nodeMask, title, !isConnection);
        if (chosen.empty())
            return false;
        resolver.Replace(chosen);
    }
    StoppableRequest const request;
    resolver.CheckTypes();
    return true;
}

} // namespace zelvar
