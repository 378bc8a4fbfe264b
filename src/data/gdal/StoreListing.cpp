#include "zelvar/data/gdal/StoreListing.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Percent.h"
#include "zelvar/data/gdal/Causes.h"
#include "zelvar/data/gdal/StoreTalk.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <cpl_vsi.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zelvar::gdal {

namespace {

struct Store {
    std::string_view scheme;
    char const *fileSystem;
};
constexpr std::array kStores{Store{"s3://", "/vsis3/"}, Store{"gs://", "/vsigs/"}, Store{"az://", "/vsiaz/"}};

Store const *StoreOf(std::string_view url) {
    auto const *const at = std::find_if(kStores.begin(), kStores.end(),
                                        [&](Store const &store) { return StartsWithNoCase(url, store.scheme); });
    return at == kStores.end() ? nullptr : at;
}

struct CloseDir {
    void operator()(VSIDIR *directory) const {
        GdalScope const scope(Reach::Network);
        VSICloseDir(directory);
    }
};

/// Notices names that come again, as from a store that continues where it was before: with one name in memory, which is
/// another one ever less often.
class Rounds {
public:
    [[nodiscard]] bool IsSeen(std::string_view name) {
        if (!m_kept.empty() && name == m_kept)
            return true;
        if (++m_count == m_next) {
            m_kept = name;
            m_next *= 2;
        }
        return false;
    }

private:
    DString m_kept;
    std::uint64_t m_count = 0;
    std::uint64_t m_next = 1;
};

class StoreListing : public FolderListing {
public:
    StoreListing(DString folder, DString prefix) : m_folder(std::move(folder)), m_prefix(std::move(prefix)) {}

    DError Next(std::vector<FolderEntry> &entries) override {
        GdalScope const scope(Reach::Network);
        StoreTalk const talk;
        if (m_listing == nullptr && !Open())
            return End(talk.HasFailed() ? talk.Failure(m_folder) : ErrorOfServer(m_folder, {}));
        // A request brings a thousand keys, so that none is asked for twice and none too early.
        for (int taken = 0; taken < kOfPage; ++taken) {
            VSIDIREntry const *const found = VSIGetNextDirEntry(m_listing.get());
            if (found == nullptr)
                return End(talk.Failure(m_folder));
            if (m_rounds.IsSeen(found->pszName == nullptr ? "" : found->pszName))
                return End(
                    Because("the listing of \"" + m_folder + "\" goes round in a circle", DError::Cause::Damaged));
            if (++m_count > kMostObjects)
                return End(Because("\"" + m_folder + "\" holds more than can be listed", DError::Cause::TooLarge));
            Take(*found, entries);
        }
        return {};
    }
    [[nodiscard]] bool IsAtEnd() const override { return m_isAtEnd; }

private:
    static constexpr int kOfPage = 1000;
    static constexpr std::int64_t kMostObjects = 1'000'000;
    static constexpr std::int64_t kSecond = 1'000'000'000; // ns
    static constexpr std::size_t kLongestName = 4096;      // a key has 1024 bytes at most

    static DError Because(DString const &text, DError::Cause cause) {
        DError error;
        error.Set(text, cause);
        return error;
    }
    DError End(DError error) {
        m_isAtEnd = true;
        m_listing.reset();
        return error;
    }
    bool Open() {
        DString const name = StoreNameOf(m_folder);
        // GDAL signs the list of all buckets for another address than it asks for where buckets stand in the path.
        // There is none to stand before the host's name either. The scope takes the setting back.
        if (StoreOf(m_folder)->fileSystem == name)
            CPLSetThreadLocalConfigOption("AWS_VIRTUAL_HOSTING", "TRUE");
        VSICurlPartialClearCache(name.c_str()); // else what failed once fails for good
        CPLStringList options;
        if (!m_prefix.empty())
            options.SetNameValue("PREFIX", m_prefix.c_str());
        constexpr int thisFolderAlone = 0;
        m_listing.reset(VSIOpenDir(name.c_str(), thisFolderAlone, options.List()));
        return m_listing != nullptr;
    }
    static void Take(VSIDIREntry const &found, std::vector<FolderEntry> &entries) {
        FolderEntry entry;
        entry.name = found.pszName == nullptr ? "" : found.pszName;
        entry.isFolder = entry.name.ends_with('/') || (found.bModeKnown != 0 && VSI_ISDIR(found.nMode) != 0);
        while (entry.name.ends_with('/'))
            entry.name.pop_back();
        if (entry.name.empty() || entry.name.front() == '.' || entry.name.find('/') != DString::npos ||
            entry.name.size() > kLongestName)
            return;
        if (found.bSizeKnown != 0 && !entry.isFolder && found.nSize <= static_cast<vsi_l_offset>(INT64_MAX))
            entry.size = static_cast<std::int64_t>(found.nSize);
        if (found.bMTimeKnown != 0 && found.nMTime > 0 && found.nMTime < INT64_MAX / kSecond)
            entry.modified = found.nMTime * kSecond;
        entries.push_back(std::move(entry));
    }

    DString m_folder;
    DString m_prefix;
    std::unique_ptr<VSIDIR, CloseDir> m_listing;
    Rounds m_rounds;
    std::int64_t m_count = 0;
    bool m_isAtEnd = false;
};

} // namespace

bool IsOfStore(std::string_view url) { return StoreOf(url) != nullptr; }

DString StoreNameOf(std::string_view url) {
    Store const *const store = StoreOf(url);
    if (store == nullptr)
        return {};
    url.remove_prefix(store->scheme.size());
    std::size_t const bucket = std::min(url.find('/'), url.size());
    if (std::size_t const at = url.substr(0, bucket).rfind('@'); at != std::string_view::npos)
        url.remove_prefix(at + 1);
    return store->fileSystem + PercentDecoded(url);
}

DString ObjectIn(DString const &folder, DString const &name) {
    bool const isOfBuckets = folder.ends_with("://") || folder.ends_with('@') || folder.ends_with('/');
    return folder + (isOfBuckets ? "" : "/") + PercentEncoded(name);
}

DString PrefixOf(DString const &mask) {
    std::size_t const end = mask.find_first_of("*?;[");
    bool const isOne = end != DString::npos && mask.find(';') == DString::npos;
    return isOne ? mask.substr(0, end) : DString();
}

std::unique_ptr<FolderListing> ListStore(DString const &folder, DString const &prefix) {
    return std::make_unique<StoreListing>(folder, prefix);
}

} // namespace zelvar::gdal
