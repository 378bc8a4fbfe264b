#include "zelvar/tool/ThumbnailPreference.h"

#include "zelvar/base/DFile.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace zelvar::tool {

namespace {

constexpr char kSection[] = "[PixbufThumbnailer]";
constexpr char kKey[] = "Disabled=";
constexpr char kNote[] = "# before 'zelvar thumbnails prefer': ";
constexpr char kMade[] = "# made by 'zelvar thumbnails prefer'\n";
/// What others show wrong; where the service's own thumbnailer is off, all that it was for.
constexpr char kRivalTypes[] = "image/tiff;";
constexpr char kOtherTypes[] = "image/png;image/gif;image/bmp;image/x-bmp;image/webp;image/x-portable-anymap;"
                               "image/x-portable-bitmap;image/x-portable-graymap;image/x-portable-pixmap;image/x-tga;";

DString Place(char const *variable, char const *belowHome) {
    char const *const value = std::getenv(variable);
    char const *const home = std::getenv("HOME");
    if (value != nullptr && *value == '/')
        return value;
    return home == nullptr ? DString() : AppendPath(home, belowHome);
}

bool WriteFile(DString const &path, DString const &text) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(DString(ParentPathOf(path))), ignored);
    return DFile(path).WriteAtomically(text);
}

DString TextOf(DString const &path) {
    DString text;
    return DFile(path).ReadAll(text) ? text : DString();
}

std::vector<DString> LinesOf(DString const &text) {
    std::vector<DString> lines = Split(text, '\n');
    if (!lines.empty() && lines.back().empty())
        lines.pop_back();
    return lines;
}

DString Joined(std::vector<DString> const &lines) {
    DString text;
    for (DString const &line : lines)
        text += line + "\n";
    return text;
}

} // namespace

DString WithBuiltInOff(DString const &settings) {
    if (settings.find(kNote) != DString::npos)
        return settings;
    DString const off = DString(kKey) + "true";
    std::vector<DString> lines;
    bool isInside = false;
    bool isDone = false;
    auto const switchOff = [&](DString const &former) {
        lines.emplace_back(kNote);
        lines.back() += former;
        lines.push_back(off);
        isDone = true;
    };
    for (DString const &line : LinesOf(settings)) {
        DString const word(Trimmed(line));
        if (word.starts_with('[')) {
            if (isInside && !isDone)
                switchOff("");
            isInside = word == kSection;
        }
        if (isInside && !isDone && word.starts_with(kKey))
            switchOff(word);
        else
            lines.push_back(line);
    }
    if (!isDone && !isInside)
        lines.emplace_back(kSection);
    if (!isDone)
        switchOff("");
    return Joined(lines);
}

DString WithBuiltInAsBefore(DString const &settings) {
    std::vector<DString> lines;
    bool isOursNext = false;
    for (DString const &line : LinesOf(settings)) {
        bool const isNote = line.starts_with(kNote);
        if (isNote && line.size() > std::string_view(kNote).size())
            lines.push_back(line.substr(std::string_view(kNote).size()));
        else if (!isNote && !(isOursNext && line.starts_with(kKey)))
            lines.push_back(line);
        isOursNext = isNote;
    }
    return Joined(lines);
}

ThumbnailPreference::ThumbnailPreference()
    : m_dataHome(Place("XDG_DATA_HOME", ".local/share")), m_configHome(Place("XDG_CONFIG_HOME", ".config")),
      m_systemConfig("/etc/xdg") {}

DString ThumbnailPreference::Set() const {
    bool const hasService = DFile(UserFile()).Exist() || DFile(SystemFile()).Exist();
    DString const text = DString("[Thumbnailer Entry]\nTryExec=zelvar\nExec=zelvar thumbnail -s %s %i %o\nMimeType=") +
                         kRivalTypes + (hasService ? kOtherTypes : "") + "\n";
    if (!WriteFile(OurFile(), text))
        return OurFile();
    if (!hasService)
        return {};
    // The user's file takes the place of the system's as a whole.
    bool const hasOwn = DFile(UserFile()).Exist();
    DString former = hasOwn ? DString() : DString(kMade);
    former += TextOf(hasOwn ? UserFile() : SystemFile());
    return WriteFile(UserFile(), WithBuiltInOff(former)) ? DString() : UserFile();
}

DString ThumbnailPreference::Undo() const {
    if (DFile(OurFile()).Exist() && std::remove(OurFile().c_str()) != 0)
        return OurFile();
    DString const settings = TextOf(UserFile());
    if (settings.find(kNote) == DString::npos)
        return {};
    DString before = WithBuiltInAsBefore(settings);
    bool const isMade = before.starts_with(kMade);
    if (isMade)
        before.erase(0, std::string_view(kMade).size());
    bool const isUntouched = isMade && (before == TextOf(SystemFile()) || before == DString(kSection) + "\n");
    if (isUntouched ? std::remove(UserFile().c_str()) == 0 : WriteFile(UserFile(), before))
        return {};
    return UserFile();
}

} // namespace zelvar::tool
