#include "zelvar/model/NtwDataSourceItemItr.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SystemImages.h"

#include <tuple>

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

bool IsShortcut(std::string_view name) {
    constexpr std::string_view kSuffix = ".lnk";
    return name.size() >= kSuffix.size() && EqualNoCase(name.substr(name.size() - kSuffix.size()), kSuffix);
}

/// Caches that the product keeps beside images: nobody must walk into them. The case of the names counts.
bool IsProductCache(std::string_view name) { return name == "_zoom_cache" || name == "_image_cache"; }

/// "*" and "*.*" name every file.
bool IsInForce(std::string_view filter) { return !filter.empty() && filter != "*" && filter != "*.*"; }

} // namespace

void NtwDataSourceItemItr::Fill(platform::ShellId const &folder, DataSourceItem::ICancel *cancel,
                                RefItemPtr<DataSourceItem> const &parent, char const *filter, char const *driverId) {
    ShellNamespace const &shell = ShellNamespace::Current();
    std::string_view const mask = filter == nullptr ? std::string_view() : filter;
    bool const filtering = IsInForce(mask);
    IconLookup icons(shell);
    bool stopped = false;
    auto const isStopped = [&] { return stopped = stopped || (cancel != nullptr && cancel->IsCanceled()); };
    // The stop signal is asked once a child: here for those that are left out, below for the others.
    auto const isWanted = [&](std::string_view name) {
        if (!stopped && !IsShortcut(name) && (!filtering || PathMatchSpec(name, mask)))
            return true;
        std::ignore = isStopped();
        return false;
    };
    shell.Enumerate(
        folder, ShellNamespace::Purpose::Browse,
        [&](ShellChild &&child) {
            if (isStopped())
                return false;
            if (child.kind != ShellKind::File && IsProductCache(child.name))
                return true;
            // Whether a driver can open the file is asked once, when the item is made.
            if (RefItemPtr<DataSourceItem> item{
                    NtwDataSourceItem::CreateChild(child, parent, driverId, icons.IndexOf(child))})
                m_items.push_back(std::move(item));
            return true;
        },
        isWanted);
    CreateCursor();
}

} // namespace zelvar
