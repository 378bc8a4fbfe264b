#include "zelvar/data/DriverOptions.h"

#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/FormatPlugin.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

namespace zelvar {

namespace {

using Lists = std::shared_ptr<DriverOptionLists const>;

std::atomic<OptionQuestions const *> g_questions{nullptr};

/// The answers so far.
class KnownOptions {
public:
    static KnownOptions &Instance() {
        static auto &known = *new KnownOptions;
        return known;
    }
    [[nodiscard]] Lists Find(DString const &driverId) const {
        std::lock_guard const lock(m_mutex);
        auto const at = m_lists.find(driverId);
        return at == m_lists.end() ? nullptr : at->second;
    }
    void Keep(DString const &driverId, Lists lists) {
        std::lock_guard const lock(m_mutex);
        m_lists[driverId] = std::move(lists);
    }

private:
    KnownOptions() {
        OnForgetDrivers([this] {
            std::lock_guard const lock(m_mutex);
            m_lists.clear();
        });
    }
    mutable std::mutex m_mutex;
    std::map<DString, Lists> m_lists;
};

std::vector<FormatPlugin const *> FormatPlugins() {
    std::vector<FormatPlugin const *> formats;
    for (DIOPlugin const *plugin : DIOPluginMngr::Instance()->Plugins())
        if (auto const *const format = dynamic_cast<FormatPlugin const *>(plugin))
            formats.push_back(format);
    return formats;
}

} // namespace

DriverOptionLists OptionsHere(DString const &driverId) {
    for (FormatPlugin const *format : FormatPlugins())
        if (EqualNoCase(format->GetId(), driverId))
            return format->GetOptions();
    return {};
}

DString TellDriverHere(BDIMoniker const &moniker) {
    std::vector<DString> asked; // families: one answers for all of them
    for (FormatPlugin const *format : FormatPlugins()) {
        DString family = format->GetFamily();
        if (!family.empty()) {
            if (std::find(asked.begin(), asked.end(), family) != asked.end())
                continue;
            asked.push_back(std::move(family));
        }
        if (DString id = format->TellFormat(moniker); !id.empty())
            return id;
    }
    return {};
}

std::shared_ptr<DriverOptionLists const> DriverOptions(DString const &driverId) {
    // Never destroyed: workers may still ask while the process ends
    static auto const &none = *new Lists(std::make_shared<DriverOptionLists>());
    if (driverId.empty())
        return none;
    if (Lists known = KnownOptions::Instance().Find(driverId))
        return known;
    OptionQuestions const *const far = g_questions.load();
    std::optional<DriverOptionLists> answer = far == nullptr ? OptionsHere(driverId) : far->options(driverId);
    if (!answer)
        return none; // the next one asks again
    Lists lists = std::make_shared<DriverOptionLists>(*std::move(answer));
    KnownOptions::Instance().Keep(driverId, lists);
    return lists;
}

DString TellDriver(BDIMoniker const &moniker) {
    OptionQuestions const *const far = g_questions.load();
    return far == nullptr ? TellDriverHere(moniker) : far->tellDriver(moniker);
}

void SetOptionQuestions(OptionQuestions const *questions) { g_questions = questions; }

} // namespace zelvar
