#include "zelvar/opends/basket/MonikerFile.h"

#include "zelvar/base/AtomicFile.h"
#include "zelvar/base/ByteEscapes.h"
#include "zelvar/base/Report.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace zelvar {

namespace {

constexpr std::uintmax_t kMostBytes = std::uintmax_t{64} << 20U;

bool IsFromRoot(std::string_view moniker) {
    return moniker.starts_with('/') || moniker.find("://") != std::string_view::npos || PathBehindDriver(moniker) > 0;
}

/// A word, with others before it.
bool IsOfDriver(char sign) { return std::isalnum(static_cast<unsigned char>(sign)) != 0 || sign == '_' || sign == ':'; }

} // namespace

std::size_t PathBehindDriver(std::string_view moniker) {
    std::size_t const root = std::min(moniker.find('/'), moniker.size());
    std::string_view driver = moniker.substr(0, root);
    if (driver.ends_with('"'))
        driver.remove_suffix(1);
    bool const isAddress = moniker.substr(root).starts_with("//");
    return !isAddress && driver.ends_with(':') && std::ranges::all_of(driver, IsOfDriver) ? root : 0;
}

bool WriteMonikers(DString const &path, std::vector<DString> const &monikers) {
    AtomicFile file(path);
    for (DString const &moniker : monikers) {
        file.Write(EscapeControlBytes(moniker));
        file.Write("\n");
    }
    return file.Commit();
}

std::optional<std::vector<DString>> ReadMonikers(DString const &path) {
    std::error_code error;
    bool const isFile = std::filesystem::is_regular_file(path, error);
    if (!isFile || std::filesystem::file_size(path, error) > kMostBytes || error)
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream whole;
    whole << file.rdbuf();
    DString const text = std::move(whole).str();
    if (!file.is_open() || file.bad() || text.find('\0') != DString::npos)
        return std::nullopt;
    DString const folder = std::filesystem::path(path).parent_path().string();
    std::vector<DString> monikers;
    for (std::size_t from = text.starts_with("\xEF\xBB\xBF") ? 3 : 0; from < text.size();) {
        std::size_t const end = std::min(text.find('\n', from), text.size());
        std::string_view line(text.data() + from, end - from);
        from = end + 1;
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.empty() || line.starts_with('#'))
            continue;
        DString moniker = UnescapeBytes(line);
        monikers.push_back(IsFromRoot(moniker) ? std::move(moniker) : folder + "/" + moniker);
    }
    return monikers;
}

} // namespace zelvar
