#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/tool/CommandLine.h"

namespace zelvar::tool {

// One function a subcommand; each gets the words behind its name and answers with the exit code. Lines for scripts go
// to stdout, one clear line of what went wrong to stderr.
int RunLs(std::vector<DString> const &words);
int RunFind(std::vector<DString> const &words);
int RunInfo(std::vector<DString> const &words);
int RunThumbnail(std::vector<DString> const &words);
int RunThumbnails(std::vector<DString> const &words);
int RunSources(std::vector<DString> const &words);
int RunSettings(std::vector<DString> const &words);
int RunOpen(std::vector<DString> const &words, int &argc, char **argv);
int RunSave(std::vector<DString> const &words, int &argc, char **argv);
int RunHistogram(std::vector<DString> const &words, int &argc, char **argv);
int RunPlot(std::vector<DString> const &words, int &argc, char **argv);
int RunAsk(std::vector<DString> const &words, int &argc, char **argv);
int RunTable(std::vector<DString> const &words, int &argc, char **argv);
int RunGallery(std::vector<DString> const &words, int &argc, char **argv);

/// The place or moniker that a word names: the word itself, and where nothing has that name, what a command printed so.
/// A password in an address stays behind.
[[nodiscard]] DString PlaceOf(DString const &word);
/// The item that a word names; null where there is none, which has been said then.
[[nodiscard]] RefItemPtr<DataSourceItem> ItemOrFailure(DString const &word);
/// "zelvar <what>: <why>" and the subcommand's usage on stderr; `kUsage`.
int UsageError(CommandSpec const &spec, DString const &why);
/// "zelvar: <why>" on stderr, in one line whatever names it holds; `kFailed`.
int Failure(DString const &why);
/// "<fault>: <reason>" with what is known of `source`, a path, address or moniker: what became of its reader, or why
/// nothing is there, else `otherwise`. The fault alone where nothing is known.
[[nodiscard]] DString WithReason(DString const &fault, DString const &source, DString const &otherwise = {});
inline constexpr char kNotOpened[] = "no driver opens it";

} // namespace zelvar::tool
