#pragma once

#include "support/Test.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/filedlg/FileDlg.h"

#include <list>

namespace zelvar::test {

/// The formats of an application's documents, "Documents 0" of "*.d0" and so on in the order of their declaration, set
/// as long as this lives.
class Documents : Pinned {
public:
    Documents() {
        int number = 0;
        for (DFileFrmt **const format : All()) {
            std::string const text = std::to_string(number++);
            *format = &m_formats.emplace_back("DOC" + text, "Documents " + text, "*.d" + text, "", true);
        }
    }
    ~Documents() { Clear(); }
    static void Clear() {
        for (DFileFrmt **const format : All())
            *format = nullptr;
    }

private:
    static std::vector<DFileFrmt **> All() {
        using F = FileDlg;
        std::vector<DFileFrmt **> all{&F::pFrmt_workspace, &F::pFrmt_dm_dbfile, &F::pFrmt_prjct, &F::pFrmt_clss_hrchy};
        all.insert(all.end(), {&F::pFrmt_clss_hrchy_user, &F::pFrmt_prtcl, &F::pFrmt_user_prop, &F::pFrmt_proc});
        all.insert(all.end(), {&F::pFrmt_wzrd, &F::pFrmt_paramset, &F::pFrmt_anly, &F::pFrmt_jobsqnce});
        all.insert(all.end(), {&F::pFrmt_platelayout, &F::pFrmt_TMAlayout, &F::pFrmt_TMAmatch});
        all.insert(all.end(), {&F::pFrmt_dosedilutionsec, &F::pFrmt_actnlib, &F::pFrmt_snpts, &F::pFrmt_textsttng});
        all.push_back(&F::pFrmt_proc_ver);
        return all;
    }
    std::list<DFileFrmt> m_formats;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // as the class under test

/// A request whose dialog is replaced: it writes down what it is given and answers with files.
class AskedRequest final : public FileDlg {
public:
    using FileDlg::FileDlg;
    using FileDlg::ShowFileDlg;

    std::vector<std::string> answer; ///< files chosen; none cancels
    char const *chosen = nullptr;    ///< id of the format chosen; null for the one that is current
    // What it was given last.
    int asked = 0;
    int mode = -1;
    int index = -1;
    DString filter;
    DString ext;
    DString key;

    /// "All Files, Raw data": the descriptions of the filter.
    [[nodiscard]] std::string Offered() const {
        std::string offered;
        for (std::size_t i = 0; i + 2 < Fields().size(); i += 2)
            offered += (offered.empty() ? "" : ", ") + Fields()[i];
        return offered;
    }
    /// The description that is current.
    [[nodiscard]] std::string Current() const { return Fields()[2 * static_cast<std::size_t>(index)]; }

protected:
    bool OpenMFCFileDlg(int mode_, char const *filter_, int index_, char const *ext_, char const *key_,
                        DLGTemplate) override {
        ++asked;
        mode = mode_;
        index = index_;
        filter = filter_;
        ext = ext_ == nullptr ? "null" : ext_;
        key = key_;
        for (std::string const &file : answer)
            m_files.push_back(new BDIMoniker(file, nullptr));
        if (chosen != nullptr)
            SetFormat(GetFormat(chosen));
        return !answer.empty();
    }

private:
    [[nodiscard]] std::vector<DString> Fields() const { return Split(filter, '|'); }
};
#pragma GCC diagnostic pop

/// A plug-in that offers formats written down by a test.
class ScriptedPlugin : public DIOPlugin {
public:
    struct Offer {
        char const *id = "";
        char const *name = "";
        char const *extensions = "";
    };
    ScriptedPlugin(DString name, std::vector<Offer> offers) : m_name(std::move(name)), m_offers(std::move(offers)) {}
    [[nodiscard]] DString GetId() const override { return m_name; }
    [[nodiscard]] DString GetInfo() const override { return m_name; }
    void BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check, DList<DFileFrmt *> &list) override {
        asked += (asked.empty() ? "" : " ") + std::to_string(mode) + ":" + std::to_string(dataType);
        list.push_back(nullptr);
        for (Offer const &offer : m_offers)
            if (check == nullptr || check->Check(offer.id))
                list.push_back(new DFileFrmt(offer.id, offer.name, offer.extensions));
    }
    static inline std::string asked; ///< "0:2": mode and data type of each question

private:
    DString m_name;
    std::vector<Offer> m_offers;
};

} // namespace zelvar::test
