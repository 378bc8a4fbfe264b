#include "zelvar/reader/Notes.h"

#include "zelvar/data/wire/SealedMemory.h"
#include "zelvar/reader/BrokerClient.h"

#include <algorithm>

namespace zelvar::reader {

namespace {

/// The end of a long name, where addresses differ: all of it stands before the content.
DString ShortName(DString const &name) {
    constexpr std::size_t most = 200;
    return name.substr(name.size() - std::min(name.size(), most));
}

std::span<std::uint8_t const> BytesOf(std::string_view text) {
    return {reinterpret_cast<std::uint8_t const *>(text.data()), text.size()};
}

} // namespace

std::optional<ReaderNote> FindNote(DString const &name) {
    ReaderNote note;
    FileDescriptor const file = BrokerClient::FindNote(ShortName(name).c_str(), note.age);
    auto const bytes = file.IsOpen() ? wire::UnsealBytes(file.Get(), wire::kLongestNote) : std::nullopt;
    if (!bytes)
        return std::nullopt;
    DString const head = name + '\0';
    std::string_view const text(reinterpret_cast<char const *>(bytes->data()), bytes->size());
    if (!text.starts_with(head))
        return std::nullopt;
    note.content = text.substr(head.size());
    return note;
}

void KeepNote(DString const &name, std::string_view content) {
    FileDescriptor const file = wire::SealBytes({BytesOf(name + '\0'), BytesOf(content)});
    if (file.IsOpen())
        BrokerClient::KeepNote(ShortName(name).c_str(), file.Get());
}

} // namespace zelvar::reader
