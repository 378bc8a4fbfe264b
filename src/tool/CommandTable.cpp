#include "zelvar/tool/CommandTable.h"

#include <algorithm>
#include <iterator>

namespace zelvar::tool {

namespace {

using Use = OptionSpec::Use;

constexpr std::size_t kLineWidth = 100; // characters

constexpr OptionSpec kShot{"--shot", "FILE.png", "write a picture of the window"};
constexpr OptionSpec kSize{"--size", "WxH", "size of the window in pixels"};
constexpr OptionSpec kMirrored{"--right-to-left", "", "lay the window out for those who read from the right"};
constexpr OptionSpec kTitle{"--title", "T", "caption of the dialog"};
constexpr OptionSpec kAccept{"--accept", "", "press OK once what is selected has come"};
constexpr OptionSpec kOption{"--option", "KEY=VALUE", "an option of the driver, behind \"?\" of the moniker",
                             Use::Repeats};
constexpr OptionSpec kClick{"--click", "X,Y", "click there, in pixels of the chart", Use::Repeats};

/// What the words in capitals stand for.
constexpr std::pair<char const *, char const *> kWords[] = {
    {"PLACE", "a path, an address, a node inside a container as printed by ls, or source:NAME"},
    {"MONIKER", "as PLACE; what open prints is one"},
    {"MASK", "as '*.tif;*.img'; sets stand in brackets: '*.[tT][iI][fF]'"},
    {"KIND",
     "raster (default of open), thematic, attributes, metadata (open only), table, tiff, xml, project, workspace, "
     "process, ruleset, solution, all"},
    {"ADDRESS", "as postgresql://user@host/database, an address of a map service, s3://bucket/prefix, or a web "
                "folder's; it holds no "
                "password"},
    {"TYPE", "postgresql, map, objects, web, odbc"},
    {"WHERE", "keyring, ask, profile, file, none (default)"},
    {"SET", "ok, ok-cancel, abort-retry-ignore, yes-no, yes-no-cancel, retry-cancel, keep, continue-abort"},
};
constexpr std::pair<ExitCode, char const *> kExitCodes[] = {
    {kDone, "done"}, {kNothing, "cancelled or nothing found"}, {kUsage, "usage"}, {kFailed, "failed"}};

/// `word` in `text`, not as part of another word.
bool HasWord(std::string_view text, std::string_view word) {
    auto const isLetter = [&](std::size_t at) { return at < text.size() && text[at] >= 'A' && text[at] <= 'Z'; };
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1))
        if ((at == 0 || !isLetter(at - 1)) && !isLetter(at + word.size()))
            return true;
    return false;
}

/// Appends the pieces with blanks between them, behind `column` characters of the present line; further lines begin at
/// `indent`.
void AppendPieces(DString &to, std::vector<DString> const &pieces, std::size_t column, std::size_t indent) {
    bool first = true;
    for (DString const &piece : pieces) {
        if (!first && column + 1 + piece.size() > kLineWidth) {
            to += "\n" + DString(indent, ' ');
            column = indent;
        } else if (!first) {
            to += ' ';
            ++column;
        }
        to += piece;
        column += piece.size();
        first = false;
    }
    to += '\n';
}

void AppendWrapped(DString &to, DString const &text, std::size_t column, std::size_t indent) {
    AppendPieces(to, Split(text, ' '), column, indent);
}

/// A line of a table of two columns.
void AppendRow(DString &to, DString const &left, DString const &right, std::size_t width) {
    to += "  " + left;
    std::size_t const at = width + 4;
    to += left.size() + 4 > at ? "\n" + DString(at, ' ') : DString(at - left.size() - 2, ' ');
    AppendWrapped(to, right, at, at);
}

/// As the usage shows it.
DString OptionText(OptionSpec const &option) {
    DString const value = option.value;
    switch (option.use) {
    case Use::Needed:
        return DString(option.name) + " " + value;
    case Use::OptionalValue:
        return DString("[") + option.name + " [" + value + "]]";
    default:
        return DString("[") + option.name + (value.empty() ? "" : " " + value) + "]" +
               (option.use == Use::Repeats ? "..." : "");
    }
}

/// What stays together where a line of usage is broken.
std::vector<DString> Pieces(CommandSpec const &spec) {
    std::vector<DString> pieces{spec.name};
    if (*spec.words != '\0')
        pieces.emplace_back(spec.words);
    for (OptionSpec const &option : spec.options)
        pieces.push_back(OptionText(option));
    return pieces;
}

void AppendWords(DString &to, std::string_view used) {
    for (auto const &[word, meaning] : WordsIn(used))
        AppendWrapped(to, DString(word) + ": " + meaning + ".", 0, std::string_view(word).size() + 2);
}

DString ExitCodesLine() {
    DString line;
    for (auto const &[code, meaning] : kExitCodes)
        line += Format("%s%d %s", line.empty() ? "Exit codes: " : ", ", code, meaning);
    return line + ".\n";
}

} // namespace

std::vector<CommandSpec> const &AllCommands() {
    static std::vector<CommandSpec> const commands{
        {.name = "open",
         .words = "[PLACE]",
         .about = "Shows a dialog to pick data in, prints monikers, one a line.",
         .options = {{"--for", "KIND", "what is opened"},
                     {"--multiple", "", "several may be picked"},
                     {"--standard", "", "use the platform's file dialog"},
                     {"--filter", "MASK", "show these files"},
                     {"--recursive", "", "list what lies in folders below, too"},
                     {"--series", "", "ten and more numbered files as one row, which gives one moniker of one image"},
                     {"--plain", "", "the dialog's panes alone: each file for itself, nothing beside them"},
                     {"--search", "NAME",
                      "search below PLACE, as find --name does; --select is for what it finds then"},
                     {"--basket", "FILE",
                      "with --multiple: put what FILE names into the basket, a moniker a line, as open prints them"},
                     {"--select", "NAME", "select the row of that name", Use::Repeats},
                     kOption,
                     {"--accept", "",
                      "press OK once what is selected has come; what speaks against it is taken and told on stderr"},
                     kTitle,
                     kShot,
                     kSize,
                     kMirrored},
         .maxArguments = 1},
        {.name = "save",
         .words = "[NAME]",
         .about = "Shows a dialog to pick a name to save under, prints the path.",
         .options = {{"--for", "KIND", "what is saved", Use::Needed},
                     kOption,
                     kAccept,
                     {"--overwrite", "", "do not ask whether to save over a file; without it the answer is no"},
                     kTitle,
                     kShot,
                     kSize,
                     kMirrored},
         .maxArguments = 1},
        {.name = "ls",
         .words = "PLACE",
         .about = "Lists what lies in PLACE, a line an item: kind, size, time, name, path, and for some what "
                  "else is known. What cannot be read is told on stderr, and the exit code is 3 then.",
         .options = {{"--folders", "", "folders and containers only"},
                     {"--recursive", "", "what lies in folders and containers below, too"},
                     {"--filter", "MASK", "only these files"},
                     {"--all", "", "each file for itself, and what lies in folders that are data sets"},
                     {"--series", "", "ten and more numbered files as one line, with what is missing behind it"},
                     {"--sort", "KEY", "name (default), size, date, or none: as the place tells them"},
                     {"--descending", "", "the other way round"},
                     {"--json", "", "print JSON"}},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "find",
         .words = "PLACE",
         .about = "Searches below PLACE, nearest folders first, and prints a line an item as it is found, as ls does: "
                  "kind, size, time, name, path. What is said of images opens files; what was read is kept in "
                  "~/.cache/zelvar, so that the next search reads nothing. Ctrl-C ends it with what it has.",
         .options = {{"--name", "NAME", "part of the name, or a mask with * and ?; several between \";\""},
                     {"--kind", "WHAT", "any (default), folder, file, dataset, container or image"},
                     {"--format", "TEXT", "part of the format's name, as tiff"},
                     {"--min-width", "N", "images of so many pixels and more"},
                     {"--max-width", "N", "or of so many and fewer; the same for the next ones"},
                     {"--min-height", "N", "pixels"},
                     {"--max-height", "N", "pixels"},
                     {"--min-channels", "N", "channels"},
                     {"--max-channels", "N", "channels"},
                     {"--min-slices", "N", "slices"},
                     {"--max-slices", "N", "slices"},
                     {"--min-frames", "N", "time frames"},
                     {"--max-frames", "N", "time frames"},
                     {"--type", "SAMPLE", "sample type: u8, u16, i16, u32, i32 or f32"},
                     {"--larger", "BYTES", "files of so many bytes and more, as 10M"},
                     {"--smaller", "BYTES", "of so many and fewer"},
                     {"--newer", "WHEN", "changed then or later: 2026-11-16, 2026-11-16T10:30, or 7d and 12h ago"},
                     {"--older", "WHEN", "changed then or before"},
                     {"--inside", "", "what lies in containers, too"},
                     {"--remote", "", "places below that lie on a network, too"},
                     {"--no-cache", "", "read everything, and keep nothing of it"},
                     {"--json", "", "print JSON"}},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "info",
         .words = "MONIKER",
         .about = "Prints the properties of one item.",
         .options = {{"--preview", "FILE.png", "write its preview, no larger than the image itself"},
                     {"--channel", "N", "that of one channel, counted from 1 as the next two"},
                     {"--slice", "N", "that of another slice than the first"},
                     {"--frame", "N", "that of another time frame than the first"},
                     {"--stretch", "RANGE",
                      "from black to white: usual, full range, or most of it, without the 2 % at either end"},
                     {"--options", "",
                      "print what can stand behind \"?\" of the moniker in place of them: name, kind, what it is by "
                      "itself, description, values"}},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "thumbnail",
         .words = "MONIKER FILE.png",
         .about = "Writes a small picture of an image, of the first image in a container, or of the first cells of a "
                  "table, and keeps it nowhere else: thumbnailing services of desktops call it so. MONIKER may be a "
                  "URI, as file:///data/a%20b.tif.",
         .options = {{"--size", "N",
                      "its longer side in pixels, 256 by default and 1024 at most; no image is "
                      "enlarged. Also -s"}},
         .minArguments = 2,
         .maxArguments = 2},
        {.name = "thumbnails",
         .words = "prefer",
         .about = "Has this user's desktop ask us for thumbnails of formats that other programs claim too, as TIFF: "
                  "those show the upper eight bits of wide samples. Writes "
                  "~/.local/share/thumbnailers/zelvar-preferred.thumbnailer and, where tumbler is installed, "
                  "~/.config/tumbler/tumbler.rc, which switches off its built-in thumbnailer of pictures.",
         .options = {{"--undo", "", "as it was before"}},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "sources",
         .words = "[list|add [ADDRESS]|remove NAME|test NAME|export NAME FILE|import FILE]",
         .about = "Prints the rows of the data source list: group, name, path. Or makes, tries, removes and passes on "
                  "connections. A trial prints a line a step: step, outcome, milliseconds, words; Ctrl-C stops it. "
                  "Passwords come from a file or the standard input, and go to the desktop's keyring.",
         .options = {{"--kind", "TYPE", "of what is added; ADDRESS tells it by itself"},
                     {"--name", "NAME", "what it is to be called"},
                     {"--field", "KEY=VALUE", "as host=db.lab; a KEY that is not known brings a list of them",
                      Use::Repeats},
                     {"--secret", "WHERE", "where its password is kept"},
                     {"--password", "FILE", "the password is the first line of it; - is the standard input"},
                     {"--allow", "HOST", "may be reached besides its own, with :PORT or without", Use::Repeats},
                     {"--time-limit", "N", "seconds to connect, 5 by default"},
                     {"--keep-both", "", "where the name is taken: with a number behind it"},
                     {"--replace", "", "in place of the one of that name"},
                     {"--skip", "", "the one of that name stays"}},
         .maxArguments = 3},
        {.name = "settings",
         .words = "export|import FILE",
         .about = "Writes the settings as XML, or brings them back, whole or not at all.",
         .options = {{"--key", "KEY", "export only what lies below it"}},
         .minArguments = 2,
         .maxArguments = 2},
        {.name = "histogram",
         .words = "FILE",
         .about = "Shows how the samples of a band or the numbers of a column are spread, prints what is picked.",
         .options = {{"--band", "N", "counted from 1"},
                     {"--column", "C", "of a table, by its name"},
                     {"--slots", "N", "how many bars; whole numbers may get fewer"},
                     {"--print", "", "print the slots, show nothing"},
                     kClick,
                     kShot,
                     kSize,
                     kMirrored},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "plot",
         .words = "FILE",
         .about = "Shows two columns of a table against each other, prints what is picked.",
         .options = {{"--x", "COLUMN", "for the horizontal axis", Use::Needed},
                     {"--y", "COLUMN", "for the vertical axis", Use::Needed},
                     {"--line", "", "join the points"},
                     kClick,
                     kShot,
                     kSize,
                     kMirrored},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "ask",
         .words = "TEXT|-",
         .about = "Asks a question, prints the button pressed. With - the text is read from the standard input.",
         .options = {{"--caption", "T", "of the box"},
                     {"--buttons", "SET", "what can be answered"},
                     {"--icon", "NAME", "stop, question, exclamation, warning or information"},
                     {"--default", "N", "the button that Return presses, counted from 1"},
                     {"--dont-ask", "TEXT", "with a check box, and its text", Use::OptionalValue},
                     {"--help-id", "N", "the topic of help about the question"},
                     {"--help-file", "FILE", "where that help is: its ending becomes .html"},
                     {"--press", "NAME", "press that button"},
                     {"--check", "", "set the check mark"},
                     kShot,
                     kMirrored},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "table",
         .words = "FILE",
         .about = "Shows the rows of a table.",
         .options = {{"--layer", "NAME", "of a file with several"},
                     {"--sort", "COLUMN", "large numbers come first, texts go from A to Z"},
                     {"--descending", "", "turns the order round"},
                     {"--rows", "N", "the first N of them"},
                     {"--print", "", "print them, show nothing"},
                     {"--select", "ROW", "its ID, from 0"},
                     kShot,
                     kSize,
                     kMirrored},
         .minArguments = 1,
         .maxArguments = 1},
        {.name = "gallery",
         .words = "",
         .about = "Shows every control and dialog of the library, to play with.",
         .options = {{"--page", "NAME", "begin with that page"},
                     {"--list", "", "print the pages with their classes, show nothing"},
                     kShot,
                     kSize,
                     kMirrored}},
    };
    return commands;
}

CommandSpec const *FindCommand(std::string_view name) {
    auto const found = std::find_if(AllCommands().begin(), AllCommands().end(),
                                    [name](CommandSpec const &spec) { return spec.name == name; });
    return found == AllCommands().end() ? nullptr : &*found;
}

CommandSpec const &SpecOf(std::string_view name) { return *FindCommand(name); }

DString Synopsis(CommandSpec const &spec) {
    DString line;
    for (DString const &piece : Pieces(spec))
        line += (line.empty() ? "" : " ") + piece;
    return line;
}

std::vector<std::pair<char const *, char const *>> WordsIn(std::string_view text) {
    std::vector<std::pair<char const *, char const *>> found;
    std::copy_if(std::begin(kWords), std::end(kWords), std::back_inserter(found),
                 [text](auto const &word) { return HasWord(text, word.first); });
    return found;
}

std::span<std::pair<ExitCode, char const *> const> ExitCodes() { return kExitCodes; }

DString UsageText() {
    DString text = "usage: zelvar COMMAND ...\n";
    for (CommandSpec const &spec : AllCommands())
        AppendRow(text, DString(spec.name) + (*spec.words == '\0' ? "" : " ") + spec.words, spec.about, 28);
    text += "zelvar COMMAND --help tells its options.\n";
    AppendWords(text, "PLACE MONIKER");
    return text + ExitCodesLine();
}

DString HelpText(CommandSpec const &spec) {
    DString text = "usage: zelvar ";
    AppendPieces(text, Pieces(spec), text.size(), 7);
    text += "\n";
    AppendWrapped(text, spec.about, 0, 0);
    if (!spec.options.empty())
        text += "\n";
    for (OptionSpec const &option : spec.options)
        AppendRow(text, DString(option.name) + (*option.value == '\0' ? "" : " ") + option.value, option.about, 20);
    text += "\n";
    AppendWords(text, Synopsis(spec));
    return text + ExitCodesLine();
}

} // namespace zelvar::tool
